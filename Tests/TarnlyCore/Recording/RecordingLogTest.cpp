#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/FullDisk.hpp"
#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class RecordingLogTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "session.jsonl";

    OpenedLog open() const { return RecordingLog::open(file, MissingFolder::leave); }
    std::string nameOfNext() const { return open().file.filename().string(); }
};

TEST_F(RecordingLogTest, NameIsTheTimeInUtcWithoutColons) {
    constexpr auto day = std::chrono::sys_days(std::chrono::year(2026) / 11 / 16);
    EXPECT_EQ(RecordingLog::fileName(day + 1h + 9min + 38s), "session-2026-11-16T010938Z.jsonl");
    EXPECT_EQ(RecordingLog::fileName(day), "session-2026-11-16T000000Z.jsonl");
    EXPECT_EQ(
        RecordingLog::fileName(std::chrono::sys_days(std::chrono::year(2024) / 2 / 29) + 23h + 59min + 59s),
        "session-2024-02-29T235959Z.jsonl");
}

TEST_F(RecordingLogTest, WhatIsWrittenStandsInTheFileAtItsPlace) {
    const auto log = open();
    ASSERT_TRUE(log.sink);
    EXPECT_EQ(log.file, file);
    EXPECT_EQ(test::contentOf(file), "");
    EXPECT_FALSE(log.sink->write(0, "one\nt*"));
    EXPECT_FALSE(log.sink->write(4, "two\n"));
    EXPECT_EQ(test::contentOf(file), "one\ntwo\n");
    EXPECT_FALSE(log.sink->flush());
}

TEST_F(RecordingLogTest, TellsWhyAWriteFailed) {
    const auto log = open();
    const test::FullDisk full(5);
    EXPECT_EQ(log.sink->write(0, "a line\n"), std::errc::file_too_large);
    EXPECT_EQ(test::contentOf(file), "a lin");
}

TEST_F(RecordingLogTest, WhatIsThereIsLeftAlone) {
    folder.write("session.jsonl", "of old");
    fs::create_directory(folder.path() / "session-2.jsonl");
    fs::create_symlink(folder.write("letter", ""), folder.path() / "session-3.jsonl");
    ASSERT_EQ(mkfifo((folder.path() / "session-4.jsonl").c_str(), 0600), 0);
    const auto log = open();
    ASSERT_TRUE(log.sink);
    EXPECT_EQ(log.file, folder.path() / "session-5.jsonl");
    EXPECT_FALSE(log.sink->write(0, "new\n"));
    EXPECT_EQ(test::contentOf(file), "of old");
    EXPECT_EQ(test::contentOf(folder.path() / "letter"), "");
    EXPECT_EQ(test::contentOf(log.file), "new\n");
}

TEST_F(RecordingLogTest, AnEmptyFileOfThatNameIsUsed) {
    folder.write("session.jsonl", "");
    EXPECT_EQ(nameOfNext(), "session.jsonl");
    EXPECT_EQ(nameOfNext(), "session.jsonl");
}

TEST_F(RecordingLogTest, AnEmptyFileThatIsInUseIsNot) {
    const auto first = open();
    const auto second = open();
    EXPECT_EQ(second.file.filename(), "session-2.jsonl");
    EXPECT_EQ(nameOfNext(), "session-3.jsonl");
}

TEST_F(RecordingLogTest, FileIsReadableByItsOwnerOnly) {
    EXPECT_EQ(fs::status(open().file).permissions(), fs::perms(0600));
    fs::permissions(file, fs::perms(0644));
    EXPECT_EQ(fs::status(open().file).permissions(), fs::perms(0600));
}

TEST_F(RecordingLogTest, KnowsWhenItsFileHasGone) {
    const auto log = open();
    EXPECT_FALSE(log.sink->write(0, "a line\n"));
    EXPECT_TRUE(log.sink->isInPlace(7));
    EXPECT_FALSE(log.sink->isInPlace(8));
    fs::rename(file, folder.path() / "moved");
    EXPECT_FALSE(log.sink->isInPlace(7));
    folder.write("session.jsonl", "another");
    EXPECT_FALSE(log.sink->isInPlace(7));
}

TEST_F(RecordingLogTest, AMissingFolderIsMadeWhereThatIsWanted) {
    const auto deep = folder.path() / "a" / "b" / "session.jsonl";
    const auto missing = RecordingLog::open(deep, MissingFolder::leave);
    EXPECT_FALSE(missing.sink);
    EXPECT_EQ(missing.error, std::errc::no_such_file_or_directory);
    EXPECT_TRUE(RecordingLog::open(deep, MissingFolder::make).sink);
    EXPECT_EQ(fs::status(deep.parent_path()).permissions(), fs::perms(0700));
}

TEST_F(RecordingLogTest, IsAbsentWhereTheFolderIsNone) {
    const auto plainFile = folder.write("plain", "");
    const auto log = RecordingLog::open(plainFile / "session.jsonl", MissingFolder::make);
    EXPECT_FALSE(log.sink);
    EXPECT_EQ(log.error, std::errc::not_a_directory);
}

} // namespace
} // namespace tarnly
