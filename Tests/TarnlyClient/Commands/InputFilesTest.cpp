#include "TarnlyClient/Commands/InputFiles.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyClient/Commands/Arguments.hpp"

namespace tarnly::client {
namespace {

using testing::StartsWith;

constexpr auto gear =
    R"({"id":"gear","condition_kind":"after_gear_down","condition":{"seconds":2.5,"fix":null},)"
    R"("action_kind":"speak","action":{"text":"Down.","again":false}})";

TEST(ScriptFile, AListAndAnObjectWithAListAreScripts) {
    ScriptTrigger trigger;
    trigger.id = "gear";
    trigger.conditionKind = "after_gear_down";
    trigger.condition = {{"seconds", {2.5}}, {"fix", {}}};
    trigger.actionKind = "speak";
    trigger.action = {{"text", {std::string("Down.")}}, {"again", {false}}};
    const LoadScriptRequest expected{{trigger, trigger}};
    const auto list = "[" + std::string(gear) + ",\n" + gear + "]";
    EXPECT_EQ(parseScript(list, "x"), expected);
    EXPECT_EQ(parseScript("\n{\"title\":\"A lesson\", \"triggers\":" + list + "}\n", "x"), expected);
    EXPECT_EQ(parseScript("[]", "x"), LoadScriptRequest{});
}

TEST(ScriptFile, WhatCompanionsRefuseIsRefused) {
    for (const auto* text : {"", "[", "[1e999]", "7", "{}", R"({"triggers":{}})", "[7]", R"([{"id":"a"}])"}) {
        try {
            parseScript(text, "x.json");
            FAIL() << text;
        } catch (const UsageError& error) {
            EXPECT_STREQ(error.what(), "the script x.json is not sent, as companions would refuse it");
        }
    }
}

TEST(ScriptFile, ComesFromAFileOrFromTheInput) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("lesson.json", "[1]");
    std::istringstream input("[2]");
    EXPECT_EQ(readScript(file.string(), input), "[1]");
    EXPECT_EQ(readScript("-", input), "[2]");
}

TEST(ScriptFile, AFileThatCannotBeReadIsRefused) {
    const test::TemporaryFolder folder;
    std::istringstream input;
    for (const auto& file : {folder.path() / "missing.json", folder.path()}) {
        try {
            readScript(file.string(), input);
            FAIL() << file;
        } catch (const UsageError& error) {
            EXPECT_THAT(error.what(), StartsWith("the script " + file.string() + " cannot be read: "));
        }
    }
}

std::string read(const std::string& content) {
    const test::TemporaryFolder folder;
    return readPassword(folder.write("password", content));
}

std::string passwordComplaint(const std::filesystem::path& file) {
    try {
        readPassword(file);
        return "";
    } catch (const UsageError& error) {
        return error.what();
    }
}

TEST(PasswordFile, PasswordIsTheFirstLine) {
    EXPECT_EQ(read("secret"), "secret");
    EXPECT_EQ(read("secret\n"), "secret");
    EXPECT_EQ(read("secret\r\n"), "secret");
    EXPECT_EQ(read(" two words \nmore\n"), " two words ");
    EXPECT_EQ(read("Gr\xC3\xBCn\n"), "Gr\xC3\xBCn");
}

TEST(PasswordFile, AFileWithoutPasswordIsRefused) {
    EXPECT_THROW(read(""), UsageError);
    EXPECT_THROW(read("\nsecret\n"), UsageError);
    EXPECT_THROW(read("\r\n"), UsageError);
    EXPECT_THROW(read("Gr\xFCn\n"), UsageError);
}

TEST(PasswordFile, AMissingFileIsNamed) {
    EXPECT_EQ(passwordComplaint("/nowhere/password"),
              "the password file /nowhere/password cannot be read: No such file or directory; name one that "
              "you may read");
}

TEST(PasswordFile, AFolderIsNoPasswordFile) { EXPECT_NE(passwordComplaint("/"), ""); }

} // namespace
} // namespace tarnly::client
