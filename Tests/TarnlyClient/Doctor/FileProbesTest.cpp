#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>
#include <future>
#include <memory>
#include <string>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyClient/Doctor/Probes.hpp"

namespace tarnly::client {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr auto diskPatience = 60s;

struct FileProbesTest : testing::Test {
    void write(const std::string& name, const std::string& content) {
        std::ofstream(folder.path() / name, std::ios::binary) << content;
    }

    FolderProbe look(const std::string& name, void (*how)(FolderProbe&)) {
        return probeFolder(folder.path() / name, how, diskPatience);
    }

    test::TemporaryFolder folder;
};

TEST_F(FileProbesTest, SavedFlightsAreCounted) {
    EXPECT_EQ(look("", lookAtSituations).count, 0U);
    for (const char* name : {"a.sit", "b.sit", "c.txt"})
        write(name, "");
    const auto probe = look("", lookAtSituations);
    EXPECT_TRUE(probe.isAnswered);
    EXPECT_EQ(probe.count, 2U);
    EXPECT_THAT(probe.failure, IsEmpty());
}

TEST_F(FileProbesTest, AFolderThatIsNoneFails) {
    EXPECT_EQ(look("absent", lookAtSituations).failure, "No such file or directory");
    write("file", "");
    EXPECT_EQ(look("file", lookAtSituations).failure, "Not a directory");
}

TEST_F(FileProbesTest, ADatabaseHasTheTablesOfOne) {
    const auto make = [&](const char* name, const char* sql) {
        sqlite3* connection = nullptr;
        sqlite3_open((folder.path() / name).c_str(), &connection);
        EXPECT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(connection);
    };
    make("nav.db", "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL)");
    EXPECT_THAT(look("nav.db", lookAtDatabase).failure, IsEmpty());
    make("another.db", "CREATE TABLE photographs (id TEXT)");
    EXPECT_THAT(look("another.db", lookAtDatabase).failure, HasSubstr("none of the tables"));
    write("text", "I am no database, and long enough to be one.");
    write("short", "SQLite");
    for (const char* name : {"text", "short", "absent", ""})
        EXPECT_THAT(look(name, lookAtDatabase).failure, Not(IsEmpty())) << name;
}

TEST_F(FileProbesTest, ADiskIsTriedWithoutATrace) {
    const auto probe = look("to be/made", lookAtDisk);
    EXPECT_THAT(probe.failure, IsEmpty());
    EXPECT_GT(probe.freeSpace, 0U);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    write("file", "");
    EXPECT_THAT(look("file", lookAtDisk).failure, Not(IsEmpty()));
}

TEST_F(FileProbesTest, SettingsAreAnObjectOrAbsent) {
    EXPECT_EQ(look("settings.json", lookAtSettings).count, 0U);
    write("settings.json", "\xEF\xBB\xBF{\"password\":\"secret\",\"startAtLogin\":false}");
    const auto probe = look("settings.json", lookAtSettings);
    EXPECT_EQ(probe.count, 1U);
    EXPECT_THAT(probe.failure, IsEmpty());
    EXPECT_EQ(passwordIn(folder.path() / "settings.json", diskPatience), "secret");
}

TEST_F(FileProbesTest, SettingsThatAreNoneFail) {
    for (const char* content : {"", "[]", "{\"password\":", "secret"}) {
        write("settings.json", content);
        EXPECT_THAT(look("settings.json", lookAtSettings).failure, Not(IsEmpty())) << content;
        EXPECT_EQ(passwordIn(folder.path() / "settings.json", diskPatience), std::nullopt) << content;
    }
    EXPECT_EQ(passwordIn(folder.path() / "absent", diskPatience), std::nullopt);
}

TEST_F(FileProbesTest, WhatHangsIsLeftBehind) {
    const auto never = std::make_shared<std::promise<void>>();
    const auto left = std::make_shared<std::promise<void>>();
    const auto probe = probeFolder(
        folder.path(),
        [never, left](FolderProbe&) {
            never->get_future().wait();
            left->set_value();
        },
        1ms);
    EXPECT_FALSE(probe.isAnswered);
    EXPECT_EQ(probe.path, folder.path());
    never->set_value();
    left->get_future().wait();
}

} // namespace
} // namespace tarnly::client
