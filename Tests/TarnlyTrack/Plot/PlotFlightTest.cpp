#include "TarnlyTrack/Plot/PlotFlight.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "TarnlyTrack/Plot/PlotPage.hpp"

using namespace tarnly::track;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;
using testing::SizeIs;

namespace {

LogSample sampleAt(double seconds, double lat = 47, double lon = 8) {
    LogSample sample;
    sample.clear();
    auto& numbers = sample.numbers;
    numbers[static_cast<std::size_t>(Quantity::elapsedSeconds)] = seconds;
    numbers[static_cast<std::size_t>(Quantity::lat)] = lat;
    numbers[static_cast<std::size_t>(Quantity::lon)] = lon;
    // Something always moves, unless the simulator is paused.
    numbers[static_cast<std::size_t>(Quantity::altitudeFt)] = 1000 + seconds;
    return sample;
}

void setThrottle(LogSample& sample, std::vector<double> values) {
    sample.hasLever[static_cast<std::size_t>(Lever::throttle)] = true;
    sample.levers[static_cast<std::size_t>(Lever::throttle)] = std::move(values);
}

PlotFlight plot(const FlightLog& log) { return plotFlight(log, "a.jsonl", std::nullopt, 1000); }

const std::vector<PlotLine>& linesOf(const PlotFlight& flight, std::string_view key) {
    const auto* found = std::find_if(plotKeys.begin(), plotKeys.end(),
                                     [&](const PlotKey& candidate) { return candidate.key == key; });
    return flight.lines.at(static_cast<std::size_t>(found - plotKeys.begin()));
}

TEST(PlotFlightTest, HasNothingOfAnEmptyLog) {
    const auto flight = plot({});
    EXPECT_EQ(flight.samples, 0);
    EXPECT_FALSE(flight.distanceNm);
    EXPECT_FALSE(flight.highestFt);
    EXPECT_THAT(flight.track.at, IsEmpty());
    for (const auto& lines : flight.lines)
        EXPECT_THAT(lines, IsEmpty());
}

TEST(PlotFlightTest, BreaksEveryLineAtAGap) {
    FlightLog log;
    for (const double seconds : {0.0, 0.5, 30.0, 30.5})
        log.append(sampleAt(seconds));
    const auto flight = plot(log);
    EXPECT_THAT(flight.gaps, ElementsAre(Pair(0.5, 30.0)));
    EXPECT_THAT(flight.track.breaks, ElementsAre(0, 2));
    ASSERT_THAT(linesOf(flight, "alt_ft"), SizeIs(1));
    EXPECT_THAT(linesOf(flight, "alt_ft")[0].at, ElementsAre(0, 0.5, 30, 30.5));
    EXPECT_THAT(linesOf(flight, "alt_ft")[0].breaks, ElementsAre(0, 2));
}

TEST(PlotFlightTest, DrawsNoLineThroughAPause) {
    FlightLog log;
    log.append(sampleAt(0));
    for (int i = 1; i <= 40; ++i) {
        auto sample = sampleAt(0.5);
        sample.numbers[0] = 0.5 * i;
        log.append(sample);
    }
    log.append(sampleAt(20.5));
    const auto flight = plot(log);
    EXPECT_THAT(flight.frozen, ElementsAre(Pair(0.5, 20.0)));
    EXPECT_THAT(linesOf(flight, "alt_ft")[0].at, ElementsAre(0, 0.5, 20, 20.5));
    EXPECT_THAT(linesOf(flight, "alt_ft")[0].breaks, ElementsAre(0, 2));
}

TEST(PlotFlightTest, BreaksOnlyTheLineWhoseValueIsNotKnown) {
    FlightLog log;
    for (int i = 0; i < 5; ++i) {
        auto sample = sampleAt(0.5 * i);
        if (i != 2) sample.numbers[static_cast<std::size_t>(Quantity::bankDeg)] = i;
        log.append(sample);
    }
    const auto flight = plot(log);
    EXPECT_THAT(linesOf(flight, "bank_deg")[0].breaks, ElementsAre(0, 2));
    EXPECT_THAT(linesOf(flight, "alt_ft")[0].breaks, ElementsAre(0));
    EXPECT_THAT(linesOf(flight, "pitch_deg"), IsEmpty());
}

TEST(PlotFlightTest, BreaksTheTrackWhereTheAircraftWasPutElsewhere) {
    FlightLog log;
    log.append(sampleAt(0, 47, 8));
    log.append(sampleAt(0.5, 47.001, 8));
    log.append(sampleAt(1, 52, 13));
    log.append(sampleAt(1.5, 52.001, 13));
    const auto flight = plot(log);
    EXPECT_THAT(flight.track.breaks, ElementsAre(0, 2));
    // Two ways of a thousandth of a degree of latitude.
    EXPECT_THAT(flight.distanceNm, Optional(DoubleNear(0.12, 0.0005)));
}

TEST(PlotFlightTest, CrossesTheDateLineWithoutABreak) {
    FlightLog log;
    log.append(sampleAt(0, 0, 179.9995));
    log.append(sampleAt(0.5, 0, -179.9995));
    const auto flight = plot(log);
    EXPECT_THAT(flight.track.breaks, ElementsAre(0));
    EXPECT_THAT(flight.distanceNm, Optional(DoubleNear(0.06, 0.0005)));
}

TEST(PlotFlightTest, DrawsEnginesApartWhereTheyDiffer) {
    FlightLog same;
    FlightLog apart;
    for (int i = 0; i < 4; ++i) {
        auto sample = sampleAt(0.5 * i);
        setThrottle(sample, {0.5, 0.5});
        same.append(sample);
        setThrottle(sample, {0.5, i == 3 ? 0.1 : 0.5});
        apart.append(sample);
    }
    EXPECT_THAT(linesOf(plot(same), "throttle_ratio"), SizeIs(1));
    const auto flight = plot(apart);
    ASSERT_THAT(linesOf(flight, "throttle_ratio"), SizeIs(2));
    EXPECT_THAT(linesOf(flight, "throttle_ratio")[1].value, ElementsAre(0.5, 0.5, 0.1));
}

TEST(PlotFlightTest, TakesATriggersMomentFromItsSample) {
    FlightLog log;
    log.append(sampleAt(0));
    log.append(sampleAt(0.502));
    log.append(FiredTrigger{"rotate", "speak", 0.502, {}});
    const auto flight = plot(log);
    ASSERT_THAT(flight.fired, SizeIs(1));
    EXPECT_EQ(flight.fired[0].id, "rotate");
    EXPECT_EQ(flight.fired[0].at, 0.502);
}

TEST(PlotFlightTest, DrawsNothingFromWhereTimeBeginsAgain) {
    FlightLog log;
    for (const double seconds : {0.0, 0.5, 1.0, 0.0, 0.5})
        log.append(sampleAt(seconds));
    log.append(FiredTrigger{"rotate", "speak", 0.5, {}});
    const auto flight = plot(log);
    EXPECT_EQ(flight.samples, 3);
    EXPECT_EQ(flight.leftOut, 2);
    EXPECT_THAT(flight.fired, IsEmpty());
    EXPECT_EQ(linesOf(flight, "alt_ft")[0].at.size(), 3);
}

TEST(PlotFlightTest, TakesAbsurdNumbersForUnknown) {
    FlightLog log;
    log.append(sampleAt(0));
    auto absurd = sampleAt(0.5);
    absurd.numbers[static_cast<std::size_t>(Quantity::altitudeFt)] = 1e300;
    log.append(absurd);
    EXPECT_THAT(linesOf(plot(log), "alt_ft")[0].at, ElementsAre(0));
    EXPECT_THAT(plot(log).highestFt, Optional(1000));
}

TEST(PlotFlightTest, KeepsTheMomentsThatAreMarked) {
    FlightLog log;
    for (int i = 0; i < 1000; ++i)
        log.append(sampleAt(0.5 * i));
    const std::vector<std::size_t> marked{777, 333, 5000};
    const auto flight = plotFlight(log, "a.jsonl", std::nullopt, 10, marked);
    EXPECT_THAT(linesOf(flight, "alt_ft")[0].at, testing::IsSupersetOf({166.5, 388.5}));
    EXPECT_THAT(flight.track.at, testing::IsSupersetOf({166.5, 388.5}));
    EXPECT_THAT(plotFlight(log, "a.jsonl", std::nullopt, 10).track.at,
                testing::Not(testing::Contains(388.5)));
}

// A page of less than 3 MB opens at once, and can be sent by mail: of a day that never repeats a value.
TEST(PlotFlightTest, ADayIsSmallOnAPage) {
    FlightLog log;
    for (int i = 0; i < 24 * 60 * 60 * 2; ++i) {
        auto sample = sampleAt(0.5 * i, 47 + std::sin(i * 0.01), 8 + std::cos(i * 0.017));
        const auto set = [&](Quantity quantity, double value) {
            sample.numbers[static_cast<std::size_t>(quantity)] = value;
        };
        set(Quantity::altitudeFt, 3000 + 1000 * std::sin(i * 1.1));
        set(Quantity::aglFt, 2000 + 1000 * std::sin(i * 1.3));
        set(Quantity::bankDeg, 30 * std::sin(i * 1.7));
        set(Quantity::pitchDeg, 10 * std::sin(i * 1.9));
        setThrottle(sample, {std::abs(std::sin(i * 2.1)), std::abs(std::sin(i * 2.3))});
        log.append(sample);
    }
    EXPECT_LT(plotPage({plotFlight(log, "a.jsonl", std::nullopt, plotColumns(1))}).size(), 3'000'000);
}

} // namespace
