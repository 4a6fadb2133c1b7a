#include "TarnlyTrack/Log/FlightSummary.hpp"

#include <gtest/gtest.h>

#include "TarnlyTrack/Log/FlightLogReader.hpp"
#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::track {
namespace {

TEST(GreatCircleTest, MeasuresAlongTheSphere) {
    EXPECT_DOUBLE_EQ(greatCircleMeters({47, 8}, {47, 8}), 0);
    EXPECT_NEAR(greatCircleMeters({0, 0}, {1, 0}), 111'195.08, 0.01);
    EXPECT_NEAR(greatCircleMeters({60, 0}, {60, 1}), 55'597.0, 10); // a little less than along the parallel
    EXPECT_NEAR(greatCircleMeters({0, 179.5}, {0, -179.5}), 111'195.08, 0.01);
    EXPECT_NEAR(greatCircleMeters({0, 0}, {0, 180}), 20'015'114, 1); // half way around
    // A centimetre keeps its digits.
    EXPECT_NEAR(greatCircleMeters({47, 8}, {47 + 9e-8, 8}), 0.010007, 1e-6);
}

TEST(GreatCircleTest, TellsTheTrack) {
    EXPECT_NEAR(initialTrackDeg({0, 0}, {1, 0}), 0, 1e-9);
    EXPECT_NEAR(initialTrackDeg({0, 0}, {0, 1}), 90, 1e-9);
    EXPECT_NEAR(initialTrackDeg({1, 0}, {0, 0}), 180, 1e-9);
    EXPECT_NEAR(initialTrackDeg({0, -179.5}, {0, 179.5}), 270, 1e-9);
    EXPECT_LT(initialTrackDeg({0, 0}, {1, -1e-18}), 360);
}

FlightSummary summaryOfText(std::string_view text) {
    FlightLogReader reader;
    reader.add(text);
    return summaryOf(reader.finish());
}

TEST(FlightSummaryTest, CountsNothingAcrossAGap) {
    const auto summary =
        summaryOfText(R"({"kind":"sample","sample":{"elapsed_s":0,"alt_ft":0,"lat":0,"lon":0}})"
                      "\n"
                      R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":900,"agl_ft":70}})"
                      "\n"
                      R"({"kind":"sample","sample":{"elapsed_s":2,"alt_ft":800,"lat":1,"lon":0}})"
                      "\n"
                      R"({"kind":"fired","fired":{"trigger_id":"a","elapsed_s":2,"action_kind":"b"}})"
                      "\n"
                      R"({"kind":"sample","sample":{"elapsed_s":12,"alt_ft":0,"lat":5,"lon":0}})"
                      "\n"
                      R"({"kind":"sample","sample":{"elapsed_s":14.5,"alt_ft":0,"lat":5,"lon":0}})"
                      "\n"
                      R"({"kind":"sample","sample":{"elapsed_s":17,"alt_ft":0,"lat":5,"lon":0}})"
                      "\ntorn");
    EXPECT_EQ(summary.samples, 6U);
    EXPECT_EQ(summary.lengthSeconds, 17);
    EXPECT_NEAR(summary.distanceMeters, 111'195.08, 0.01);
    EXPECT_EQ(summary.highestIndicatedFt, 900);
    EXPECT_EQ(summary.highestAglFt, 70);
    EXPECT_EQ(summary.firedTriggers, 1U);
    EXPECT_EQ(summary.gaps, 1U);
    EXPECT_EQ(summary.gapSeconds, 10);
    EXPECT_EQ(summary.frozenStretches, 1U);
    EXPECT_EQ(summary.frozenSeconds, 5);
    EXPECT_TRUE(summary.faults.hasTornEnd);
}

TEST(FlightSummaryTest, OfNothingNothingIsKnown) {
    const auto summary = summaryOfText("");
    EXPECT_EQ(summary.samples, 0U);
    EXPECT_EQ(summary.lengthSeconds, 0);
    EXPECT_EQ(summary.highestIndicatedFt, std::nullopt);
}

} // namespace
} // namespace tarnly::track
