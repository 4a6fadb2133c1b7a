#include "TarnlyClient/Output/ReadableText.hpp"

#include <gtest/gtest.h>

namespace tarnly::client {
namespace {

TEST(NumberText, IsTheShortestThatReadsBackTheSame) {
    EXPECT_EQ(numberText(3), "3");
    EXPECT_EQ(numberText(-0.1), "-0.1");
    EXPECT_EQ(numberText(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(numberText(-1.7976931348623157e308), "-1.7976931348623157e+308");
}

TEST(ReadableText, ASampleStandsInColumns) {
    TrackSample sample;
    sample.elapsedSeconds = 12.5049;
    sample.lat = -33.96;
    sample.lon = 118.6000049;
    sample.altitudeFt = 2345.6;
    sample.aglFt = -0.6;
    sample.gearDown = true;
    EXPECT_EQ(describe(sample),
              "    12.50 s  -33.96000  118.60000  altitude  2346 ft  height    -1 ft  gear down");
    sample.gearDown = false;
    EXPECT_TRUE(describe(sample).ends_with("gear up"));
}

TEST(ReadableText, WhatIsNotKnownIsADash) {
    TrackSample sample;
    EXPECT_EQ(describe(sample),
              "     0.00 s          -          -  altitude     0 ft  height     - ft  gear -");
}

TEST(ReadableText, AFiredTriggerStandsInTheSameColumns) {
    EXPECT_EQ(describe(FiredTriggerEvent{"gear check", 3661.256, "speak"}),
              "  3661.26 s  fired gear check  (speak)");
}

Date date(double seconds) { return Date::readJson(boost::json::value(seconds)); }

TEST(ReadableText, ADateIsWholeSecondsOfUtc) {
    EXPECT_EQ(describe(date(0)), "2001-01-01 00:00:00");
    EXPECT_EQ(describe(date(-0.25)), "2000-12-31 23:59:59");
    EXPECT_EQ(describe(date(816570578.9)), "2026-11-17 01:09:38");
    EXPECT_EQ(describe(date(1e10)), "2317-11-21 17:46:40");
    EXPECT_EQ(describe(date(1e300)), "9999-12-31 23:59:59");
    EXPECT_EQ(describe(date(-1e300)), "-9999-01-01 00:00:00");
}

} // namespace
} // namespace tarnly::client
