#include "TarnlyTrack/Log/FlightLogReader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "Support/TemporaryFolder.hpp"

namespace tarnly::track {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

/// A line, without its line feed.
std::string sampleLine(const std::string& elapsedSeconds, const std::string& more = "") {
    return R"({"kind":"sample","sample":{"elapsed_s":)" + elapsedSeconds + R"(,"alt_ft":100)" + more + "}}";
}

const std::string firedLine =
    R"({"kind":"fired","fired":{"trigger_id":"gear","elapsed_s":0.5,"action_kind":"speak"}})";

FlightLog read(std::string_view text, std::size_t pieceSize = 1'000'000) {
    FlightLogReader reader;
    for (; !text.empty(); text.remove_prefix(std::min(pieceSize, text.size())))
        reader.add(text.substr(0, pieceSize));
    return reader.finish();
}

TEST(FlightLogReaderTest, ReadsLinesHoweverTheyAreCut) {
    const auto text = sampleLine("0", R"(,"lat":47.5,"lon":8.5)") + "\n" + sampleLine("0.5") + "\n" +
                      firedLine + "\n" + sampleLine("1") + "\n";
    for (std::size_t pieceSize = 1; pieceSize <= text.size(); ++pieceSize) {
        const auto log = read(text, pieceSize);
        ASSERT_EQ(log.size(), 3U);
        EXPECT_EQ(log.elapsedSeconds(2), 1);
        EXPECT_EQ(log.position(0), (Position{47.5, 8.5}));
        ASSERT_EQ(log.fired().size(), 1U);
        EXPECT_EQ(log.fired()[0].triggerId, "gear");
        EXPECT_EQ(log.fired()[0].actionKind, "speak");
        EXPECT_EQ(log.fired()[0].sample, 1U);
        EXPECT_EQ(log.faults, LogFaults());
    }
}

TEST(FlightLogReaderTest, LastLineMayBeTorn) {
    const auto whole = sampleLine("0") + "\n" + sampleLine("0.5") + "\n";
    const auto last = sampleLine("1");
    for (std::size_t size = 1; size < last.size(); ++size) {
        const auto log = read(whole + last.substr(0, size));
        EXPECT_EQ(log.size(), 2U);
        EXPECT_EQ(log.faults, (LogFaults{.hasTornEnd = true})) << size;
    }
    const auto log = read(whole + last); // whole, whether a line feed follows or not
    EXPECT_EQ(log.size(), 3U);
    EXPECT_EQ(log.faults, LogFaults());
}

TEST(FlightLogReaderTest, ForeignLinesAreCounted) {
    const auto log = read("\n" + sampleLine("0") + "\n" + sampleLine("0.5").substr(0, 40) + "\n[1]\n" +
                          R"({"kind":"paused"})" + "\n" + sampleLine("1") + "\n");
    EXPECT_EQ(log.size(), 2U);
    EXPECT_EQ(log.faults, (LogFaults{.unreadableLines = 3, .unknownLines = 1}));
}

TEST(FlightLogReaderTest, WhatIsNoValueIsCounted) {
    const auto log = read(sampleLine("0", R"(,"lat":91,"lon":-180.5,"agl_ft":1e999)") + "\n" +
                          sampleLine("1", R"(,"lat":-90,"lon":180)") + "\n" +
                          R"({"kind":"sample","sample":{"elapsed_s":1.5,"agl_ft":7}})" + "\n");
    ASSERT_EQ(log.size(), 3U);
    EXPECT_EQ(log.position(0), std::nullopt);
    EXPECT_EQ(log.value(Quantity::aglFt, 0), std::nullopt);
    EXPECT_EQ(log.position(1), (Position{-90, 180}));
    EXPECT_EQ(log.value(Quantity::altitudeFt, 2), std::nullopt);
    EXPECT_EQ(log.value(Quantity::aglFt, 2), 7);
    EXPECT_EQ(log.faults, (LogFaults{.leftOutValues = 3, .lackingAltitudes = 1}));
}

TEST(FlightLogReaderTest, LinesThatNeverEndFillNoMemory) {
    const std::string endless(3'000'000, 'x');
    const auto log = read(sampleLine("0") + "\n" + endless + "\n" + sampleLine("1") + "\n" + endless, 4096);
    EXPECT_EQ(log.size(), 2U);
    EXPECT_EQ(log.faults, (LogFaults{.unreadableLines = 1, .hasTornEnd = true}));
}

TEST(FlightLogReaderTest, AReaderBeginsAnew) {
    FlightLogReader reader;
    reader.add(sampleLine("0") + "\nx\n");
    reader.finish();
    reader.add(sampleLine("1") + "\n");
    const auto log = reader.finish();
    EXPECT_EQ(log.size(), 1U);
    EXPECT_EQ(log.faults, LogFaults());
}

TEST(FlightLogReaderTest, ReadsAFileAndTellsHowFar) {
    const tarnly::test::TemporaryFolder folder;
    std::string text;
    for (int i = 0; i < 20'000; ++i)
        text += sampleLine(std::to_string(i)) + "\n";
    const auto file = folder.write("flight.jsonl", text);
    std::vector<std::size_t> told;
    const auto log = readFlightLog(file, [&](std::size_t done, std::size_t size) {
        EXPECT_EQ(size, text.size());
        told.push_back(done);
    });
    EXPECT_EQ(log.size(), 20'000U);
    EXPECT_GT(told.size(), 2U);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.back(), text.size());
}

TEST(FlightLogReaderTest, SaysWhyAFileCannotBeRead) {
    const tarnly::test::TemporaryFolder folder;
    const auto missing = folder.path() / "none.jsonl";
    EXPECT_THAT([&] { readFlightLog(missing); },
                ThrowsMessage<TrackError>(HasSubstr("none.jsonl cannot be read: No such file")));
    EXPECT_THAT([&] { readFlightLog(folder.path()); }, ThrowsMessage<TrackError>(HasSubstr("it is no file")));
    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT([&] { readFlightLog(pipe); }, ThrowsMessage<TrackError>(HasSubstr("it is no file")));
}

} // namespace
} // namespace tarnly::track
