#include "TarnlyTrack/Replay/RecordedFlight.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <string>
#include <utility>

#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNan;
using testing::Optional;

/// Samples of these times, each with these members more.
RecordedFlight flightOf(std::initializer_list<std::pair<double, std::string>> samples) {
    FlightLogReader reader;
    for (const auto& [time, members] : samples) {
        reader.add(R"({"kind":"sample","sample":{"elapsed_s":)" + std::to_string(time) + members + "}}\n");
    }
    return RecordedFlight(reader.finish());
}

TEST(RecordedFlightTest, StandsAtItsBeginningAndStaysWithinItsEnds) {
    auto flight = flightOf({{2, R"(,"alt_ft":100)"}, {3, R"(,"alt_ft":200)"}});
    EXPECT_EQ(flight.begin(), 2);
    EXPECT_EQ(flight.end(), 3);
    EXPECT_EQ(flight.moment(), 2);
    flight.goTo(-7);
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 100);
    flight.goTo(99);
    EXPECT_EQ(flight.moment(), 3);
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 200);
}

TEST(RecordedFlightTest, NumbersLieBetweenTheirSamples) {
    auto flight = flightOf({{0, R"(,"alt_ft":100,"lat":47,"agl_ft":10,"pitch_deg":-2,"flap_ratio":0)"},
                            {2, R"(,"alt_ft":200,"lat":47.01,"agl_ft":0,"pitch_deg":2,"flap_ratio":1)"},
                            {3, R"(,"alt_ft":300,"lat":47.02)"}});
    flight.goTo(0.5);
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 125);
    EXPECT_DOUBLE_EQ(flight.number(Quantity::lat), 47.0025);
    EXPECT_EQ(flight.number(Quantity::aglFt), 7.5);
    EXPECT_EQ(flight.number(Quantity::pitchDeg), -1);
    EXPECT_EQ(flight.number(Quantity::flapRatio), 0.25);
    flight.goTo(2); // just on a sample
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 200);
    EXPECT_EQ(flight.number(Quantity::lat), 47.01);
}

TEST(RecordedFlightTest, AnglesTakeTheShortWay) {
    auto flight =
        flightOf({{0, R"(,"lon":179.998,"bank_deg":170)"}, {1, R"(,"lon":-179.998,"bank_deg":-170)"}});
    flight.goTo(0.25);
    EXPECT_NEAR(flight.number(Quantity::lon), 179.999, 1e-9);
    EXPECT_NEAR(flight.number(Quantity::bankDeg), 175, 1e-9);
    flight.goTo(0.75);
    EXPECT_NEAR(flight.number(Quantity::lon), -179.999, 1e-9);
    EXPECT_NEAR(flight.number(Quantity::bankDeg), -175, 1e-9);
}

TEST(RecordedFlightTest, WhatIsOnOrOffGoesInSteps) {
    auto flight = flightOf({{0, R"(,"gear_down":true)"}, {1, R"(,"gear_down":false)"}, {2, ""}});
    flight.goTo(0.99);
    EXPECT_THAT(flight.isOn(Switch::gearDown), Optional(true));
    flight.goTo(1);
    EXPECT_THAT(flight.isOn(Switch::gearDown), Optional(false));
    flight.goTo(2);
    EXPECT_EQ(flight.isOn(Switch::gearDown), std::nullopt);
    EXPECT_TRUE(flight.has(Switch::gearDown));
    EXPECT_FALSE(flight.has(Switch::autopilotOn));
}

TEST(RecordedFlightTest, EachEngineHasItsOwnLever) {
    auto flight = flightOf({{0, R"(,"throttle_ratio":[0,1],"prop_ratio":[1])"},
                            {1, R"(,"throttle_ratio":[1,0.5],"prop_ratio":[0.5,0.5])"},
                            {2, ""}});
    EXPECT_EQ(flight.engines(Lever::throttle), 2u);
    EXPECT_EQ(flight.engines(Lever::mixture), 0u);
    flight.goTo(0.5);
    EXPECT_THAT(flight.numbers(Lever::throttle), ElementsAre(0.5, 0.75));
    EXPECT_THAT(flight.numbers(Lever::prop), ElementsAre(1)) << "another aircraft comes with the next sample";
    EXPECT_THAT(flight.numbers(Lever::mixture), IsEmpty());
    flight.goTo(1.5);
    EXPECT_THAT(flight.numbers(Lever::throttle), ElementsAre(1, 0.5));
    flight.goTo(2);
    EXPECT_THAT(flight.numbers(Lever::throttle), IsEmpty());
}

TEST(RecordedFlightTest, InAGapTheValuesStandStill) {
    auto flight = flightOf({{0, R"(,"alt_ft":100,"lat":1,"lon":2)"},
                            {1, R"(,"alt_ft":200,"lat":1.0005,"lon":2)"},
                            {9, R"(,"alt_ft":900,"lat":1.001,"lon":2)"}});
    flight.goTo(8.9);
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 200);
    EXPECT_EQ(flight.number(Quantity::lat), 1.0005);
    EXPECT_FALSE(flight.isPaused());
    flight.goTo(9);
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 900);
}

TEST(RecordedFlightTest, NothingFliesWhereTheAircraftWasPut) {
    const std::string here = R"(,"alt_ft":100,"lat":1,"lon":2)";
    const std::string there = R"(,"alt_ft":5000,"lat":3,"lon":4)";
    auto flight = flightOf({{0, here}, {0.5, here}, {1, there}, {1.5, there}, {2, there}});
    flight.goTo(0.9);
    EXPECT_EQ(flight.number(Quantity::lat), 1);
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 100);
    EXPECT_THAT(flight.groundSpeedKt(), IsNan());
    flight.goTo(1);
    EXPECT_EQ(flight.number(Quantity::lat), 3);
    flight.goTo(2);
    EXPECT_EQ(flight.groundSpeedKt(), 0);
}

TEST(RecordedFlightTest, SamplesThatFollowEachOtherSoonAreNoJump) {
    auto flight = flightOf({{0, R"(,"lat":1,"lon":2)"}, {0.004, R"(,"lat":1.0002,"lon":2)"}});
    flight.goTo(0.002);
    EXPECT_DOUBLE_EQ(flight.number(Quantity::lat), 1.0001);
}

TEST(RecordedFlightTest, WhatIsNotKnownIsNotInvented) {
    auto flight = flightOf({{0, R"(,"agl_ft":10)"}, {1, ""}, {2, R"(,"agl_ft":30)"}});
    flight.goTo(0.5);
    EXPECT_EQ(flight.number(Quantity::aglFt), 10);
    flight.goTo(1.5);
    EXPECT_THAT(flight.number(Quantity::aglFt), IsNan());
    EXPECT_TRUE(flight.has(Quantity::aglFt));
    EXPECT_FALSE(flight.has(Quantity::lat));
    EXPECT_THAT(flight.groundSpeedKt(), IsNan());
}

TEST(RecordedFlightTest, SpeedAndTrackAreDerived) {
    // From nearly north by west to nearly north by east, a minute of arc in 20 seconds.
    auto flight = flightOf({{0, R"(,"alt_ft":100,"lat":0,"lon":0)"},
                            {1, R"(,"alt_ft":110,"lat":0.0008333,"lon":-0.00001)"},
                            {2, R"(,"alt_ft":120,"lat":0.0016667,"lon":0)"}});
    EXPECT_NEAR(flight.groundSpeedKt(), 180, 0.3);
    EXPECT_NEAR(flight.trackDeg(), 360 - 0.6875, 0.001);
    EXPECT_NEAR(flight.verticalSpeedFtMin(), 600, 1e-6);
    flight.goTo(0.5);
    EXPECT_NEAR(flight.trackDeg(), 360 - 0.6875 / 2, 0.001);
    flight.goTo(1.25);
    EXPECT_NEAR(flight.trackDeg(), 0.6875 / 4, 0.001);
}

TEST(RecordedFlightTest, AStretchThatIsFrozenIsPaused) {
    FlightLogReader reader;
    for (int half = 0; half <= 40; ++half) {
        const int shown = half < 10 ? half : half <= 30 ? 10 : half - 20;
        reader.add(R"({"kind":"sample","sample":{"elapsed_s":)" + std::to_string(half / 2.0) +
                   R"(,"alt_ft":)" + std::to_string(100 + shown) + R"(,"lat":1,"lon":2}})" + "\n");
    }
    RecordedFlight flight(reader.finish());
    for (const auto& [moment, isPaused] : {std::pair(4.9, false), {5.0, true}, {14.9, true}, {15.0, false}}) {
        flight.goTo(moment);
        EXPECT_EQ(flight.isPaused(), isPaused) << moment;
    }
}

TEST(RecordedFlightTest, EndsWhereTimeGoesBack) {
    auto flight =
        flightOf({{0, R"(,"alt_ft":100)"}, {1, R"(,"alt_ft":200)"}, {0, R"(,"alt_ft":5,"agl_ft":5)"}});
    EXPECT_EQ(flight.end(), 1);
    EXPECT_EQ(flight.leftOut(), 1u);
    EXPECT_FALSE(flight.has(Quantity::aglFt));
    flight.goTo(5);
    EXPECT_EQ(flight.number(Quantity::altitudeFt), 200);
}

} // namespace
} // namespace tarnly::track
