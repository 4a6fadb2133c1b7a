#include "TarnlyTrack/Trial/ScriptFile.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"

namespace tarnly::track {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
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

TEST(ScriptFile, WarningsSayWhereAndAreNoLongList) {
    EXPECT_THAT(scriptWarnings("[" + std::string(gear) + "]", "x.json"), IsEmpty());
    EXPECT_THAT(scriptWarnings("[7]", "x.json"), ElementsAre(StartsWith("x.json:1:2: ")));
    std::string many = "[7";
    for (int i = 0; i < 24; ++i)
        many += ",7";
    const auto warnings = scriptWarnings(many + "]", "x.json");
    ASSERT_THAT(warnings, SizeIs(21));
    EXPECT_EQ(warnings.back(), "and 5 more; script --check lists them all");
}

} // namespace
} // namespace tarnly::track
