#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/FullDisk.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/Recordings.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class RecordingLogTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "session.jsonl";
    const LogLine first = LogLine::of(test::sampleAt(1));
    const LogLine second = LogLine::of(test::firedAt(2));
    const LogLine third = LogLine::of(test::sampleAt(3));

    static std::string text(const LogLine& line) { return encodeJson(line) + "\n"; }

    /// Writes `first`, then `second` of which `taken` bytes still fit the disk, then `third` on a disk with
    /// room.
    std::string writeWithSecondCutTo(std::size_t taken) {
        RecordingLog log(RecordingLog::createFile(file));
        log.append(text(first));
        {
            const test::FullDisk full(text(first).size() + taken);
            log.append(text(second));
        }
        log.append(text(third));
        return test::contentOf(file);
    }
};

TEST_F(RecordingLogTest, NameIsTheTimeInUtcWithoutColons) {
    constexpr auto day = std::chrono::sys_days(std::chrono::year(2026) / 11 / 16);
    EXPECT_EQ(RecordingLog::fileName(day + 1h + 9min + 38s), "session-2026-11-16T010938Z.jsonl");
    EXPECT_EQ(RecordingLog::fileName(day), "session-2026-11-16T000000Z.jsonl");
    EXPECT_EQ(
        RecordingLog::fileName(std::chrono::sys_days(std::chrono::year(2024) / 2 / 29) + 23h + 59min + 59s),
        "session-2024-02-29T235959Z.jsonl");
}

TEST_F(RecordingLogTest, LinesStandInTheFileWhenAppendReturns) {
    RecordingLog log(RecordingLog::createFile(file));
    EXPECT_EQ(test::contentOf(file), "");
    log.append(text(first));
    EXPECT_EQ(test::contentOf(file), text(first));
    log.append(text(second));
    EXPECT_EQ(test::contentOf(file), text(first) + text(second));
}

TEST_F(RecordingLogTest, FileIsReadableByItsOwnerOnly) {
    folder.write("session.jsonl", "of old");
    fs::permissions(file, fs::perms(0644));
    ASSERT_TRUE(RecordingLog::createFile(file));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
}

TEST_F(RecordingLogTest, TakesThePlaceOfAnOlderFile) {
    folder.write("session.jsonl", "of old");
    ASSERT_TRUE(RecordingLog::createFile(file));
    EXPECT_EQ(test::contentOf(file), "");
}

TEST_F(RecordingLogTest, NeverWritesThroughALink) {
    const auto victim = folder.write("letter", "dear");
    fs::create_symlink(victim, file);
    RecordingLog log(RecordingLog::createFile(file));
    log.append(text(first));
    EXPECT_EQ(test::contentOf(victim), "dear");
    EXPECT_EQ(test::contentOf(file), text(first));
}

TEST_F(RecordingLogTest, APipeOfThatNameDoesNotBlock) {
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    ASSERT_TRUE(RecordingLog::createFile(file));
    EXPECT_TRUE(fs::is_regular_file(file));
}

TEST_F(RecordingLogTest, IsAbsentWhereTheFileCannotBe) {
    fs::create_directories(file);
    EXPECT_FALSE(RecordingLog::createFile(file));
    EXPECT_FALSE(RecordingLog::createFile(folder.path() / "missing" / "session.jsonl"));
    const auto plainFile = folder.write("plain", "");
    EXPECT_FALSE(RecordingLog::createFile(plainFile / "session.jsonl"));
}

TEST_F(RecordingLogTest, LineThatFindsNoRoomAtAllLeavesNoTrace) {
    EXPECT_EQ(writeWithSecondCutTo(0), text(first) + text(third));
}

TEST_F(RecordingLogTest, LineThatIsCutShortStaysAlone) {
    const auto cut = text(second).substr(0, 10);
    EXPECT_EQ(writeWithSecondCutTo(10), text(first) + cut + "\n" + text(third));
    const auto log = test::readLogFile(file);
    EXPECT_EQ(log.lines, (std::vector{first, third}));
    EXPECT_EQ(log.unreadableLines, 1U);
}

TEST_F(RecordingLogTest, LineThatLacksItsLineFeedOnlyGetsItFromTheNext) {
    const auto lineFeedOnly = text(second).size() - 1;
    EXPECT_EQ(writeWithSecondCutTo(lineFeedOnly), text(first) + text(second) + text(third));
}

TEST_F(RecordingLogTest, DiskThatStaysFullDoesNotAddToTheCutLine) {
    RecordingLog log(RecordingLog::createFile(file));
    {
        const test::FullDisk full(5);
        for (int i = 0; i < 3; ++i)
            log.append(text(first));
    }
    log.append(text(third));
    EXPECT_EQ(test::contentOf(file), text(first).substr(0, 5) + "\n" + text(third));
}

} // namespace
} // namespace tarnly
