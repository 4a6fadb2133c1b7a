#include "TarnlyClient/Lesson/LessonFile.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"

namespace tarnly::client {
namespace {

using testing::HasSubstr;

std::string complaintAbout(const std::filesystem::path& file) {
    try {
        readLessonFile(file);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "none";
}

TEST(LessonFileTest, AFileBringsItselfAndNothingBesideIt) {
    const test::TemporaryFolder folder;
    const auto path = folder.write("circuit.json", R"({"script":[]})");
    const auto file = readLessonFile(path);
    EXPECT_EQ(file.own.file, path.string());
    EXPECT_EQ(file.own.text, R"({"script":[]})");
    EXPECT_EQ(file.folder, folder.path());
    EXPECT_FALSE(file.isFolder);
    EXPECT_EQ(file.plainName, "circuit");
}

TEST(LessonFileTest, AFolderHasItsLessonOrAScriptAlone) {
    const test::TemporaryFolder folder;
    folder.write("script.json", "[]");
    EXPECT_EQ(readLessonFile(folder.path()).own.text, "{}");
    folder.write("lesson.json", R"({"name":"a"})");
    const auto file = readLessonFile(folder.path());
    EXPECT_EQ(file.own.text, R"({"name":"a"})");
    EXPECT_EQ(file.own.file, (folder.path() / "lesson.json").string());
    EXPECT_TRUE(file.isFolder);
    EXPECT_EQ(file.plainName, folder.path().filename().string());
    EXPECT_EQ(readLessonFile(folder.path().string() + "/").plainName, file.plainName);
}

TEST(LessonFileTest, WhatCannotBeReadIsNamedWithTheReason) {
    const test::TemporaryFolder folder;
    EXPECT_THAT(complaintAbout(folder.path()), HasSubstr("neither lesson.json nor script.json"));
    const auto missing = folder.path() / "gone.json";
    EXPECT_EQ(complaintAbout(missing), "the lesson " + missing.string() +
                                           " cannot be read: No such file or directory; name a file or a "
                                           "folder that you may read");
}

TEST(LessonFileTest, APartKeepsItsLinesAndColumns) {
    const std::string text = "{\"näme\": \"\u2708\",\n \"script\": [{\"a\": \"]\\\"]\"}, 2], \"x\": [1]}";
    EXPECT_EQ(partInPlace(text, text.find('[')), "             \n           [{\"a\": \"]\\\"]\"}, 2]");
    EXPECT_EQ(partInPlace("{\"a\":{}}", 5), "     {}");
    EXPECT_EQ(partInPlace("\r\n[[]]", 2), "\r\n[[]]");
}

} // namespace
} // namespace tarnly::client
