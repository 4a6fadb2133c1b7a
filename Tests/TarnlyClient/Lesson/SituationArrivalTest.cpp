#include "TarnlyClient/Lesson/SituationArrival.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tarnly::client {
namespace {

using State = SituationArrival::State;

constexpr AircraftPlace here{47, 8, 1400};
constexpr AircraftPlace there{47.05, 8, 3000};

/// Looks twice a second while the aircraft is where `place` says; the state at the end.
template <typename Place>
State look(SituationArrival& arrival, double& seconds, double until, Place place) {
    auto state = State::waiting;
    while (state == State::waiting && seconds < until) {
        seconds += 0.5;
        state = arrival.see(seconds, place(seconds));
    }
    return state;
}

auto at(const std::optional<AircraftPlace>& place) {
    return [place](double) { return place; };
}

/// At 200 knots.
auto flying(double seconds) { return std::optional(AircraftPlace{47 + seconds * 0.000926, 8, 1400}); }

TEST(SituationArrivalTest, AnAircraftThatIsSuddenlyElsewhereHasArrivedTwoSecondsLater) {
    SituationArrival arrival(here);
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 3, at(here)), State::waiting);
    EXPECT_FALSE(arrival.hasBegun());
    EXPECT_EQ(look(arrival, seconds, 30, at(there)), State::arrived);
    EXPECT_EQ(seconds, 5.5);
}

TEST(SituationArrivalTest, AClimbThatNoAircraftFliesIsALoading) {
    SituationArrival arrival(here);
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 30, at(AircraftPlace{47, 8, 4000})), State::arrived);
    EXPECT_EQ(seconds, 2.5);
}

TEST(SituationArrivalTest, ASimulatorThatFallsSilentIsLoadingUntilValuesComeAgain) {
    SituationArrival arrival(here);
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 4, at(here)), State::waiting);
    EXPECT_EQ(look(arrival, seconds, 40, at(std::nullopt)), State::waiting);
    EXPECT_FALSE(arrival.isPlaceKnown());
    EXPECT_EQ(look(arrival, seconds, 60, at(here)), State::arrived);
    EXPECT_EQ(seconds, 42.5);
}

TEST(SituationArrivalTest, AnAircraftThatIsPlacedTwiceArrivesAfterTheSecondTime) {
    SituationArrival arrival(here);
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 1.5, at(there)), State::waiting);
    EXPECT_EQ(look(arrival, seconds, 30, at(here)), State::arrived);
    EXPECT_EQ(seconds, 4);
}

TEST(SituationArrivalTest, FromTheMainMenuTheFirstValuesTell) {
    SituationArrival arrival(std::nullopt);
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 9, at(std::nullopt)), State::waiting);
    EXPECT_EQ(look(arrival, seconds, 30, at(here)), State::arrived);
    EXPECT_EQ(seconds, 11.5);
}

TEST(SituationArrivalTest, AnAircraftThatFliesOnWasNotLoaded) {
    SituationArrival arrival(flying(0));
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 300, flying), State::waiting);
    EXPECT_FALSE(arrival.hasBegun());
    EXPECT_TRUE(arrival.isPlaceKnown());
}

TEST(SituationArrivalTest, AShortWayBackIsALoadingWhereTheAircraftWasSlower) {
    SituationArrival arrival(flying(0));
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 5, flying), State::waiting);
    EXPECT_FALSE(arrival.hasBegun());
    const auto back = [](double time) { return flying(time - 5); }; // 500 metres
    EXPECT_EQ(look(arrival, seconds, 30, back), State::arrived);
    EXPECT_EQ(seconds, 7.5);
}

TEST(SituationArrivalTest, ASimulatorThatStumblesHasNotLoaded) {
    SituationArrival arrival(flying(0));
    double seconds = 0;
    // Every fifth look shows what the one before has shown.
    const auto stumbling = [](double time) {
        const auto half = std::lround(time * 2);
        return flying(half % 5 == 0 ? time - 0.5 : time);
    };
    EXPECT_EQ(look(arrival, seconds, 300, stumbling), State::waiting);
    EXPECT_FALSE(arrival.hasBegun());
}

TEST(SituationArrivalTest, AnAircraftThatTaxiedAndStandsIsTakenForLoaded) {
    SituationArrival arrival(here);
    double seconds = 0;
    const auto taxiing = [](double time) {
        return std::optional(AircraftPlace{47 + std::min(time, 10.0) * 4e-5, 8, 1400});
    };
    EXPECT_EQ(look(arrival, seconds, 60, taxiing), State::still);
    EXPECT_EQ(seconds, 22);
}

TEST(SituationArrivalTest, AfterTheLoadingTheAircraftMayFly) {
    SituationArrival arrival(there);
    double seconds = 0;
    EXPECT_EQ(look(arrival, seconds, 30, flying), State::arrived);
    EXPECT_EQ(seconds, 2.5);
}

TEST(SituationArrivalTest, AnAircraftThatOnlyTremblesStoodThereAlready) {
    SituationArrival arrival(here);
    double seconds = 0;
    const auto trembling = [](double time) {
        return std::optional(AircraftPlace{47 + (time > 3 ? 1e-6 : 0), 8, 1401});
    };
    EXPECT_EQ(look(arrival, seconds, 60, trembling), State::still);
    EXPECT_EQ(seconds, 12);
}

} // namespace
} // namespace tarnly::client
