#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <gtest/gtest.h>

#include "TarnlyCore/Recording/Recordings.hpp"

namespace tarnly {
namespace {

using test::readLog;

const auto firstLine = LogLine::of(test::fullSampleAt(0.5));
const auto secondLine = LogLine::of(test::firedAt(0.5, "β/1"));
const auto firstText = encodeJson(firstLine);
const auto secondText = encodeJson(secondLine);

TEST(RecordingLogReader, EmptyLogHasNoLines) {
    const auto log = readLog("");
    EXPECT_TRUE(log.lines.empty());
    EXPECT_EQ(log.unreadableLines, 0U);
    EXPECT_FALSE(log.hasTornEnd);
}

TEST(RecordingLogReader, GivesTheLinesInTheirOrder) {
    const auto log = readLog(firstText + "\n" + secondText + "\n" + firstText + "\n");
    EXPECT_EQ(log.lines, (std::vector{firstLine, secondLine, firstLine}));
    EXPECT_EQ(log.unreadableLines, 0U);
    EXPECT_FALSE(log.hasTornEnd);
}

TEST(RecordingLogReader, TornEndIsPassedOverWhereverItWasTorn) {
    for (std::size_t length = 1; length < secondText.size(); ++length) {
        const auto log = readLog(firstText + "\n" + secondText.substr(0, length));
        EXPECT_EQ(log.lines, std::vector{firstLine}) << length;
        EXPECT_TRUE(log.hasTornEnd) << length;
        EXPECT_EQ(log.unreadableLines, 0U) << length;
    }
}

TEST(RecordingLogReader, WholeLastLineWithoutLineFeedCounts) {
    const auto log = readLog(firstText + "\n" + secondText);
    EXPECT_EQ(log.lines, (std::vector{firstLine, secondLine}));
    EXPECT_FALSE(log.hasTornEnd);
}

TEST(RecordingLogReader, LinesThatAreNoLogLinesArePassedOverAndCounted) {
    for (const std::string odd :
         {"", "{", "null", "[]", R"({"kind":"sample"})", R"({"kind":"fired","fired":null})",
          R"({"kind":"sample","sample":{"elapsed_s":1}})", R"({"sample":{"elapsed_s":1,"alt_ft":2}})",
          R"({"kind":"sample","sample":{"elapsed_s":"1","alt_ft":2}})", "\xFF"}) {
        const auto log = readLog(firstText + "\n" + odd + "\n" + secondText + "\n");
        EXPECT_EQ(log.lines, (std::vector{firstLine, secondLine})) << odd;
        EXPECT_EQ(log.unreadableLines, 1U) << odd;
        EXPECT_FALSE(log.hasTornEnd) << odd;
    }
}

TEST(RecordingLogReader, KindsAndKeysToComeAreNoError) {
    const auto log = readLog(R"({"kind":"weather","weather":{"wind":12}})"
                             "\n"
                             R"({"note":1,"kind":"sample","sample":{"alt_ft":2500,"mach":0.2,"elapsed_s":4}})"
                             "\n");
    ASSERT_EQ(log.lines.size(), 2U);
    EXPECT_EQ(log.lines[0], (LogLine{"weather", std::nullopt, std::nullopt}));
    EXPECT_EQ(log.lines[1], LogLine::of(test::sampleAt(4)));
    EXPECT_EQ(log.unreadableLines, 0U);
}

} // namespace
} // namespace tarnly
