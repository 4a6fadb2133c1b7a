#include "TarnlyXPlane/TrackSampleReading.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyXPlane/Datarefs.hpp"

namespace tarnly {
namespace {

/// Ids as a catalogue would give them: 1 to 13 in the order of subscription.
IdsByName sampleIds() {
    IdsByName ids;
    for (const auto name : datarefs::samples)
        ids.emplace(name, static_cast<std::int64_t>(ids.size() + 1));
    return ids;
}

TrackSample read(const DatarefUpdate& update) {
    ValueCache cache;
    cache.apply(update);
    return readTrackSample(sampleIds(), cache).sample;
}

TEST(TrackSampleReading, SubscriptionOrder) {
    const std::vector<std::string_view> expected{
        "sim/flightmodel/position/latitude",
        "sim/flightmodel/position/longitude",
        "sim/flightmodel/misc/h_ind",
        "sim/flightmodel/position/y_agl",
        "sim/cockpit2/controls/gear_handle_down",
        "sim/flightmodel2/gear/deploy_ratio",
        "sim/cockpit2/engine/actuators/throttle_ratio_all",
        "sim/cockpit2/engine/actuators/mixture_ratio_all",
        "sim/cockpit2/engine/actuators/prop_ratio_all",
        "sim/cockpit2/controls/flap_ratio",
        "sim/flightmodel/position/phi",
        "sim/flightmodel/position/theta",
        "sim/cockpit2/autopilot/servos_on",
    };
    EXPECT_EQ(std::vector(datarefs::samples.begin(), datarefs::samples.end()), expected);
}

TEST(TrackSampleReading, EveryFieldHasItsDataref) {
    const auto sample =
        read({{{1, 47.5}, {2, -8.25}, {3, 3500}, {4, 100}, {5, 1}, {10, 0.5}, {11, -20}, {12, 5}, {13, 1}},
              {{6, {0, 1, 1}}, {7, {0.1, 0.2}}, {8, {0.3}}, {9, {}}}});
    TrackSample expected;
    expected.lat = 47.5;
    expected.lon = -8.25;
    expected.altitudeFt = 3500;
    expected.aglFt = 328.084;
    expected.gearDown = true;
    expected.gearRatio = 2.0 / 3;
    expected.throttleRatio = {0.1, 0.2};
    expected.mixtureRatio = {0.3};
    expected.propRatio.emplace();
    expected.flapRatio = 0.5;
    expected.bankDeg = -20;
    expected.pitchDeg = 5;
    expected.autopilotOn = true;
    EXPECT_EQ(sample, expected);
}

TEST(TrackSampleReading, NoFieldIsForgotten) {
    DatarefUpdate update;
    for (std::int64_t id = 1; id <= std::ssize(datarefs::samples); ++id) {
        update.values[id] = 1;
        update.arrayValues[id] = {1};
    }
    const auto json = parseJson(encodeJson(read(update)));
    const auto isRead = [&](const auto& field) {
        EXPECT_TRUE(json.as_object().contains(field.key))
            << field.key << " is read from no dataref: see TrackSampleReading.cpp and datarefs::samples";
    };
    std::apply([&](const auto&... fields) { (isRead(fields), ...); }, TrackSample::fields());
}

TEST(TrackSampleReading, WithoutValuesAllIsAbsentAndAltitudeZero) { EXPECT_EQ(read({}), TrackSample()); }

TEST(TrackSampleReading, NamesOutsideTheCatalogueAreAbsent) {
    ValueCache cache;
    cache.apply({{{1, 47.5}, {2, 8}, {3, 3500}}, {{6, {1}}, {7, {1}}}});
    TrackSample expected;
    expected.lon = 8;
    EXPECT_EQ(readTrackSample({{std::string(datarefs::longitude), 2}}, cache).sample, expected);
}

TEST(TrackSampleReading, SwitchesTurnOnAboveOneHalf) {
    EXPECT_EQ(read({{{5, 0.5}, {13, 0.5}}, {}}).gearDown, false);
    EXPECT_EQ(read({{{5, 0.5}, {13, 0.5}}, {}}).autopilotOn, false);
    EXPECT_EQ(read({{{5, 0.51}, {13, 2}}, {}}).gearDown, true);
    EXPECT_EQ(read({{{5, 0.51}, {13, 2}}, {}}).autopilotOn, true);
    EXPECT_EQ(read({{{5, -1}}, {}}).gearDown, false);
}

TEST(TrackSampleReading, GearRatioOfNoWheelsIsAbsent) {
    EXPECT_EQ(read({{}, {{6, {}}}}).gearRatio, std::nullopt);
    EXPECT_EQ(read({{}, {{6, {0}}}}).gearRatio, 0);
}

TEST(TrackSampleReading, AListIsNeverTakenForANumber) {
    EXPECT_EQ(read({{}, {{1, {47}}, {3, {3500}}, {5, {1}}}}), TrackSample());
}

TEST(TrackSampleReading, ANumberCountsAsAListOfOne) {
    const auto sample = read({{{6, 0.5}, {7, 0.75}}, {}});
    EXPECT_EQ(sample.gearRatio, 0.5);
    EXPECT_EQ(sample.throttleRatio, (std::vector<double>{0.75}));
}

TEST(TrackSampleReading, TheFlapRequestStandsInWhereTheFlapRatioIsMissing) {
    IdsByName ids{{std::string(datarefs::flapRequestRatio), 1}};
    ValueCache cache;
    cache.apply({{{1, 0.25}}, {}, {}});
    EXPECT_EQ(readTrackSample(ids, cache).sample.flapRatio, 0.25);
    ids.emplace(datarefs::flapRatio, 2);
    EXPECT_EQ(readTrackSample(ids, cache).sample.flapRatio, std::nullopt);
}

TEST(TrackSampleReading, WhatIsNoNumberAnyMoreIsLeftOut) {
    const IdsByName ids{{std::string(datarefs::phi), 1}};
    ValueCache cache;
    cache.apply({{{1, 3}}, {}, {}});
    cache.apply({{}, {}, {1}});
    EXPECT_EQ(readTrackSample(ids, cache).sample.bankDeg, std::nullopt);
    EXPECT_EQ(cache.scalar(1), 3) << "reads still answer the last number";
    cache.apply({{{1, 4}}, {}, {}});
    EXPECT_EQ(readTrackSample(ids, cache).sample.bankDeg, 4);
}

} // namespace
} // namespace tarnly
