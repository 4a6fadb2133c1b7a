#include "TarnlyTrack/Log/FlightLog.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>

namespace tarnly::track {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

LogSample sampleAt(double elapsedSeconds) {
    LogSample sample;
    sample.clear();
    sample.numbers[static_cast<std::size_t>(Quantity::elapsedSeconds)] = elapsedSeconds;
    return sample;
}

LogSample with(LogSample sample, Quantity quantity, double value) {
    sample.numbers[static_cast<std::size_t>(quantity)] = value;
    return sample;
}

LogSample at(double elapsedSeconds, double lat, double lon) {
    return with(with(sampleAt(elapsedSeconds), Quantity::lat, lat), Quantity::lon, lon);
}

FlightLog logOf(std::initializer_list<LogSample> samples) {
    FlightLog log;
    for (const auto& sample : samples)
        log.append(sample);
    return log;
}

/// Samples at these times.
FlightLog logAt(std::initializer_list<double> times) {
    FlightLog log;
    for (const double time : times)
        log.append(sampleAt(time));
    return log;
}

/// Altitudes half a second apart, and at the given times.
std::vector<std::optional<double>> altitudes(
    std::initializer_list<std::pair<double, double>> timesAndAltitudes) {
    FlightLog log;
    for (const auto& [time, altitude] : timesAndAltitudes)
        log.append(with(sampleAt(time), Quantity::altitudeFt, altitude));
    std::vector<std::optional<double>> result;
    for (std::size_t i = 0; i < log.size(); ++i)
        result.push_back(log.value(Quantity::altitudeFt, i));
    return result;
}

TEST(FlightLogTest, KeepsWhatASampleHas) {
    auto full = with(at(1, 47.5, 8.5), Quantity::pitchDeg, -2.25);
    full.switches[static_cast<std::size_t>(Switch::autopilotOn)] = false;
    full.levers[static_cast<std::size_t>(Lever::throttle)] = {0.25, 0.5};
    full.hasLever[static_cast<std::size_t>(Lever::throttle)] = true;
    full.hasLever[static_cast<std::size_t>(Lever::prop)] = true; // of no engine
    const auto log = logOf({sampleAt(0.5), full, sampleAt(1.5)});

    ASSERT_EQ(log.size(), 3U);
    EXPECT_EQ(log.elapsedSeconds(1), 1);
    EXPECT_EQ(log.position(1), (Position{47.5, 8.5}));
    EXPECT_EQ(log.value(Quantity::pitchDeg, 1), -2.25);
    EXPECT_EQ(log.value(Switch::autopilotOn, 1), false);
    EXPECT_EQ(log.value(Switch::gearDown, 1), std::nullopt);
    EXPECT_THAT(log.value(Lever::throttle, 1).value(), ElementsAre(0.25, 0.5));
    EXPECT_THAT(log.value(Lever::prop, 1).value(), IsEmpty());
    EXPECT_FALSE(log.value(Lever::mixture, 1));
    EXPECT_EQ(log.engines(Lever::throttle), 2U);
    EXPECT_EQ(log.engines(Lever::prop), 0U);
    for (const std::size_t bare : {0U, 2U}) {
        EXPECT_EQ(log.position(bare), std::nullopt);
        EXPECT_EQ(log.value(Quantity::pitchDeg, bare), std::nullopt);
        EXPECT_FALSE(log.value(Lever::throttle, bare));
    }
}

TEST(FlightLogTest, HalfAPositionIsNone) {
    EXPECT_EQ(logOf({with(sampleAt(0), Quantity::lat, 47)}).position(0), std::nullopt);
}

TEST(FlightLogTest, AltitudeOfNoughtIsUnknownUntilOneIsTold) {
    const std::optional<double> none;
    EXPECT_THAT(altitudes({{0, 0}, {0.5, 0}, {1, 1400}, {1.5, 0}, {2, 1400}}),
                ElementsAre(none, none, 1400, 0, 1400));
    // After a gap likewise: the simulator may be a new one.
    EXPECT_THAT(altitudes({{0, 1400}, {0.5, 0}, {4, 0}, {4.5, -3}, {5, 0}}),
                ElementsAre(1400, 0, none, -3, 0));
    EXPECT_THAT(altitudes({{0, 0}, {0.5, -0.0}}), ElementsAre(none, none));
}

TEST(FlightLogTest, GapsDivideItIntoSegments) {
    EXPECT_THAT(logAt({}).segments(), IsEmpty());
    EXPECT_THAT(logAt({0}).segments(), ElementsAre(Stretch{0, 1}));
    EXPECT_THAT(logAt({0, 3, 6.001, 6.5, 20}).segments(),
                ElementsAre(Stretch{0, 2}, Stretch{2, 4}, Stretch{4, 5}));
}

TEST(FlightLogTest, TimeThatGoesBackIsAGap) {
    EXPECT_THAT(logAt({5, 5.5, 0, 0, 0.5}).segments(), ElementsAre(Stretch{0, 2}, Stretch{2, 5}));
}

TEST(FlightLogTest, WhereTimeGoesBackAnotherRecordingBegins) {
    EXPECT_EQ(logAt({5, 5.5, 5.5, 90, 0, 91}).firstRecording(), 4u);
    EXPECT_EQ(logAt({5, 6}).firstRecording(), 2u);
    EXPECT_EQ(FlightLog().firstRecording(), 0u);
}

TEST(FlightLogTest, WhatStaysToTheLastDigitIsFrozen) {
    FlightLog log;
    for (int i = 0; i < 4; ++i)
        log.append(at(i, 47 + i, 8));
    for (int i = 4; i < 10; ++i) // from the last of those on
        log.append(at(i, 50, 8));
    log.append(at(10, 51, 8));
    EXPECT_THAT(log.frozen(), ElementsAre(Stretch{3, 10}));
}

TEST(FlightLogTest, FrozenLastsFiveSecondsAtLeast) {
    EXPECT_THAT(logOf({at(0, 1, 1), at(2.5, 1, 1), at(4.999, 1, 1)}).frozen(), IsEmpty());
    EXPECT_THAT(logOf({at(0, 1, 1), at(2.5, 1, 1), at(5, 1, 1)}).frozen(), ElementsAre(Stretch{0, 3}));
}

TEST(FlightLogTest, AnythingThatMovesIsNotFrozen) {
    for (const auto quantity :
         {Quantity::altitudeFt, Quantity::aglFt, Quantity::bankDeg, Quantity::pitchDeg}) {
        const auto log = logOf({with(at(0, 1, 1), quantity, 1), with(at(2.5, 1, 1), quantity, 2),
                                with(at(5, 1, 1), quantity, 1)});
        EXPECT_THAT(log.frozen(), IsEmpty());
    }
    // The hand on a lever freezes nothing, and thaws nothing.
    const auto log = logOf({with(at(0, 1, 1), Quantity::flapRatio, 0),
                            with(at(2.5, 1, 1), Quantity::flapRatio, 1), at(5, 1, 1)});
    EXPECT_THAT(log.frozen(), ElementsAre(Stretch{0, 3}));
}

TEST(FlightLogTest, NothingIsFrozenAcrossAGapOrWithoutAPosition) {
    EXPECT_THAT(logOf({at(0, 1, 1), at(2.5, 1, 1), at(9, 1, 1), at(11, 1, 1)}).frozen(), IsEmpty());
    EXPECT_THAT(logAt({0, 2, 4, 6, 8}).frozen(), IsEmpty());
    EXPECT_THAT(logAt({}).frozen(), IsEmpty());
}

TEST(FlightLogTest, TriggersKnowTheirSample) {
    FlightLog log;
    log.append(FiredTrigger{"early", "speak", 0, std::nullopt});
    log.append(sampleAt(0));
    log.append(sampleAt(0.5));
    log.append(FiredTrigger{"gear", "speak", 0.5, std::nullopt});
    log.append(sampleAt(1));
    ASSERT_EQ(log.fired().size(), 2U);
    EXPECT_EQ(log.fired()[0].sample, std::nullopt);
    EXPECT_EQ(log.fired()[1].sample, 1U);
}

} // namespace
} // namespace tarnly::track
