#include "TarnlyTrack/Grade/GradedFlight.hpp"

#include <gtest/gtest.h>

#include "TarnlyTrack/Grade/Flights.hpp"

namespace tarnly::track {
namespace {

using test::fired;
using test::logOf;
using test::sample;
using test::still;

TEST(GradedFlight, TimeIsFlownFromSampleToSampleBesideGapsAndFrozenStretches) {
    const auto log = logOf(sample(0, 1) + still(0.5, 6.5) + sample(7, 1) + sample(11, 1) + sample(14, 1));
    const GradedFlight flight(log);
    ASSERT_EQ(flight.size(), 11U);
    EXPECT_EQ(flight.flownSeconds(0), 0.5);
    EXPECT_EQ(flight.flownSeconds(1), 0) << "frozen";
    EXPECT_EQ(flight.flownSeconds(6), 0) << "frozen";
    EXPECT_EQ(flight.flownSeconds(7), 0.5) << "the last of the frozen ones, after which it flies on";
    EXPECT_EQ(flight.flownSeconds(8), 0) << "a gap";
    EXPECT_EQ(flight.flownSeconds(9), 3);
    EXPECT_EQ(flight.flownSeconds(10), 0);
}

TEST(GradedFlight, WhatPassedIsDivided) {
    const auto log = logOf(sample(0, 1) + still(0.5, 6.5) + sample(7, 1) + sample(11, 1) + sample(14, 1));
    const GradedFlight flight(log);
    const auto all = flight.between(-1, 15.5);
    EXPECT_EQ(all.flown, 4);
    EXPECT_EQ(all.frozen, 6);
    EXPECT_EQ(all.unknown, 6.5);
    const auto within = flight.between(2, 12);
    EXPECT_EQ(within.flown, 1.5);
    EXPECT_EQ(within.frozen, 4.5);
    EXPECT_EQ(within.unknown, 4);
    const FlightLog none;
    EXPECT_EQ(GradedFlight(none).between(1, 3).unknown, 2);
}

TEST(GradedFlight, WhereTheAircraftWasPutElsewhereItIsBroken) {
    const auto at = [](double elapsed, double lat) {
        return sample(elapsed, 1, R"("lon":8,"lat":)" + test::numberText(lat));
    };
    // 0.02 degrees are 2.2 km.
    const auto log = logOf(at(0, 47) + at(1, 47.02) + at(2, 47.05) + sample(3, 1) + at(4, 49) + at(8, 49));
    const GradedFlight flight(log);
    EXPECT_FALSE(flight.isBrokenBetween(0, 1));
    EXPECT_TRUE(flight.isBrokenBetween(1, 2));
    EXPECT_FALSE(flight.isBrokenBetween(2, 3)) << "nobody knows where it was";
    EXPECT_TRUE(flight.isBrokenBetween(2, 4));
    EXPECT_TRUE(flight.isBrokenBetween(4, 5)) << "a gap";
    EXPECT_EQ(flight.flownSeconds(0), 1);
    EXPECT_EQ(flight.flownSeconds(1), 0);
    EXPECT_EQ(flight.between(0, 2).unknown, 1);
}

TEST(GradedFlight, EndsWhereTimeGoesBack) {
    const auto log = logOf(sample(0, 1) + sample(1, 1) + sample(0.5, 1) + fired("a", 0.5));
    const GradedFlight flight(log);
    EXPECT_EQ(flight.size(), 2U);
    EXPECT_EQ(flight.samplesFrom(0.25, 9), (Stretch{1, 2}));
    EXPECT_FALSE(flight.firedAt("a"));
}

TEST(GradedFlight, FindsTheFirstFiringThatIsNotTooEarly) {
    const auto log =
        logOf(sample(0, 1) + fired("a", 0) + sample(1, 1) + fired("b", 1) + sample(2, 1) + fired("a", 2));
    const GradedFlight flight(log);
    EXPECT_EQ(flight.firedAt("a"), 0);
    EXPECT_EQ(flight.firedAt("a", 0), 0);
    EXPECT_EQ(flight.firedAt("a", 1), 2);
    EXPECT_FALSE(flight.firedAt("b", 2));
    EXPECT_FALSE(flight.firedAt("c"));
}

} // namespace
} // namespace tarnly::track
