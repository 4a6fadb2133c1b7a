#include "TarnlyTrack/Output/Words.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tarnly::track {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::sys_seconds moment =
    std::chrono::sys_days(std::chrono::year(2026) / 11 / 16) + 1h + 9min + 38s;

TEST(WordsTest, NumbersHaveNoExponentAndNoZerosAtTheEnd) {
    EXPECT_EQ(fixedText(47.4581, 9), "47.4581");
    EXPECT_EQ(fixedText(1e-7, 9), "0.0000001");
    EXPECT_EQ(fixedText(-1e-10, 9), "0");
    EXPECT_EQ(fixedText(100, 2), "100");
    EXPECT_EQ(fixedText(100, 0), "100");
    EXPECT_EQ(fixedText(1e20, 1), "100000000000000000000");
    EXPECT_EQ(fixedText(std::numeric_limits<double>::max(), 2).size(), 309U);
    EXPECT_EQ(fixedText(-2.5, 1), "-2.5");
}

TEST(WordsTest, Moments) {
    EXPECT_EQ(isoTime(moment), "2026-11-16T01:09:38.000Z");
    EXPECT_EQ(isoTime(momentOf(moment, 0.0045)), "2026-11-16T01:09:38.005Z");
    EXPECT_EQ(isoTime(momentOf(moment, 86'400)), "2026-11-17T01:09:38.000Z");
    EXPECT_EQ(isoTime(momentOf(moment, -39)), "2026-11-16T01:08:59.000Z");
    EXPECT_EQ(isoTime(momentOf(Moment::max(), 0)), "9999-12-31T23:59:59.999Z");
    EXPECT_EQ(isoTime(momentOf(moment, 1e300)).size(), 24U);
    EXPECT_EQ(utcText(moment), "2026-11-16 01:09:38 UTC");
}

TEST(WordsTest, ReadsMoments) {
    EXPECT_EQ(parseIsoTime("2026-11-16T01:09:38Z"), Moment(moment));
    EXPECT_EQ(parseIsoTime("2026-11-16T01:09:38.25Z"), moment + 250ms);
    EXPECT_EQ(parseIsoTime("2026-11-16T01:09:38.007Z"), moment + 7ms);
    EXPECT_EQ(parseIsoTime(isoTime(momentOf(moment, 5.5))), moment + 5500ms);
    for (const auto* text :
         {"", "Z", "2026-11-16", "2026-11-16T01:09:38", "2026-11-16T01:09:38+01:00", "2026-11-16 01:09:38Z",
          "2026-02-30T01:09:38Z", "2026-11-16T24:00:00Z", "2026-11-16T01:60:00Z", "2026-11-16T01:09:60Z",
          "2026-11-16T01:09:38.Z", "2026-11-16T01:09:38.1234Z", "2026-11-16T01:09:38,5Z",
          "2026-11-16T01:09:38ZZ", "+026-11-16T01:09:38Z"}) {
        EXPECT_EQ(parseIsoTime(text), std::nullopt) << text;
    }
}

TEST(WordsTest, Durations) {
    EXPECT_EQ(durationText(0), "0:00:00");
    EXPECT_EQ(durationText(3723.4), "1:02:03");
    EXPECT_EQ(durationText(59.5), "0:01:00");
    EXPECT_EQ(durationText(86'400 * 5), "120:00:00");
    EXPECT_EQ(durationText(-1), "0:00:00");
}

} // namespace
} // namespace tarnly::track
