#include "TarnlyTrack/Log/Derived.hpp"

#include <gtest/gtest.h>

#include "TarnlyTrack/Log/SmallLogs.hpp"

namespace tarnly::track {
namespace {

using test::here;
using test::logOf;

TEST(DerivedTest, SpeedIsThatBetweenTheNeighbours) {
    // A minute of arc in 20 s of which two are flown here: 180 knots to the east.
    const auto at = [](double seconds) {
        return R"(,"lat":0,"lon":)" + std::to_string(seconds / 20 / 60) + R"(,"alt_ft":)" +
               std::to_string(1000 + seconds * 10);
    };
    const auto log = logOf({{0, at(0)}, {1, at(1)}, {2, at(2)}, {9, at(9)}});
    for (const std::size_t sample : {0U, 1U, 2U}) {
        const auto derived = derivedAt(log, sample);
        EXPECT_NEAR(derived.groundSpeedKt.value(), 180, 0.3); // the mile is one of a larger sphere
        EXPECT_NEAR(derived.trackDeg.value(), 90, 0.001);
        EXPECT_NEAR(derived.verticalSpeedFtMin.value(), 600, 0.001);
    }
    const auto alone = derivedAt(log, 3); // behind a gap
    EXPECT_EQ(alone.groundSpeedKt, std::nullopt);
    EXPECT_EQ(alone.trackDeg, std::nullopt);
    EXPECT_EQ(alone.verticalSpeedFtMin, std::nullopt);
}

TEST(DerivedTest, WhatStandsHasNoTrack) {
    const auto derived = derivedAt(logOf({{0, here}, {0.5, here}}), 0);
    EXPECT_EQ(derived.groundSpeedKt, 0);
    EXPECT_EQ(derived.trackDeg, std::nullopt);
}

TEST(DerivedTest, TwoSamplesOfOneMomentTellNoSpeed) {
    EXPECT_EQ(derivedAt(logOf({{1, here}, {1, here}}), 0).groundSpeedKt, std::nullopt);
}

} // namespace
} // namespace tarnly::track
