#include "TarnlyClient/Lesson/LessonCheck.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.hpp"

namespace tarnly::client {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr auto helloScript = R"([{"id":"hello","condition_kind":"after_start","condition":{"seconds":0},)"
                             R"("action_kind":"","action":{}}])";

class LessonCheckTest : public testing::Test {
  public:
    CheckedLesson check(const std::string& text) const {
        return checkLesson(readLessonFile(folder.write("a.json", text)));
    }

    /// "a.json:1:2: text", with the names of files alone.
    static std::vector<std::string> lines(const CheckedLesson& checked) {
        std::vector<std::string> result;
        for (const auto& [file, finding] : checked.findings)
            result.push_back(findingText(std::filesystem::path(file).filename().string(), finding));
        return result;
    }

    std::vector<std::string> findings(const std::string& text) const { return lines(check(text)); }

    std::string withScript(const std::string& more) const {
        return std::string("{\"script\":") + helloScript + "," + more + "}";
    }

    const test::TemporaryFolder folder;
};

TEST_F(LessonCheckTest, AWholeLessonIsRead) {
    const auto checked = check(withScript(
        R"("name":"Circuit","situation":"Pattern 1","briefing":"Fly.\n","ends":{"trigger":"hello","seconds":1.5},)"
        R"("tolerances":[{"id":"b","kind":"bank_not_exceeded","bank_deg":30,"from":"hello"}])"));
    EXPECT_THAT(lines(checked), IsEmpty());
    const auto& lesson = checked.lesson;
    EXPECT_EQ(lesson.name, "Circuit");
    EXPECT_EQ(lesson.situation, "Pattern 1");
    EXPECT_EQ(lesson.briefing, "Fly.");
    ASSERT_EQ(lesson.script.triggers.size(), 1U);
    EXPECT_EQ(lesson.script.triggers[0].id, "hello");
    ASSERT_EQ(lesson.tolerances.size(), 1U);
    EXPECT_EQ(lesson.tolerances[0].bankDegrees, 30);
    EXPECT_EQ(lesson.endTrigger, "hello");
    EXPECT_EQ(lesson.endTime, std::chrono::milliseconds(1500));
}

TEST_F(LessonCheckTest, AScriptIsAllThatIsNeeded) {
    const auto checked =
        check(std::string("{\"script\":{\"triggers\":") + helloScript + "},\"situation\":null}");
    EXPECT_TRUE(checked.isUsable());
    EXPECT_THAT(checked.findings, IsEmpty());
    EXPECT_EQ(checked.lesson.name, "a");
    EXPECT_EQ(checked.lesson.situation, std::nullopt);
    EXPECT_EQ(checked.lesson.endTime, std::nullopt);
}

TEST_F(LessonCheckTest, PartsMayBeFilesBesideIt) {
    folder.write("s.json", helloScript);
    folder.write("t.json", R"({"tolerances":[{"id":"b","kind":"bank_not_exceeded","bank_deg":30}]})");
    const auto checked = check(R"({"script":"s.json","tolerances":"t.json"})");
    EXPECT_THAT(lines(checked), IsEmpty());
    EXPECT_EQ(checked.lesson.script.triggers.size(), 1U);
    EXPECT_EQ(checked.lesson.tolerances.size(), 1U);
}

TEST_F(LessonCheckTest, AFolderHasWhatItsLessonLeavesOut) {
    folder.write("script.json", helloScript);
    folder.write("briefing.md", "Fly well.\r\n\r\n");
    folder.write("tolerances.json", R"([{"id":"b","kind":"bank_not_exceeded","bank_deg":30}])");
    const auto checked = checkLesson(readLessonFile(folder.path()));
    EXPECT_THAT(lines(checked), IsEmpty());
    EXPECT_EQ(checked.lesson.briefing, "Fly well.");
    EXPECT_EQ(checked.lesson.script.triggers.size(), 1U);
    EXPECT_EQ(checked.lesson.tolerances.size(), 1U);
    // Its own words win.
    folder.write("lesson.json",
                 R"({"briefing":"Fly better.","tolerances":[{"id":"c","kind":"bank_not_exceeded",)"
                 R"("bank_deg":20},{"id":"d","kind":"bank_not_exceeded","bank_deg":10}]})");
    const auto own = checkLesson(readLessonFile(folder.path()));
    EXPECT_EQ(own.lesson.briefing, "Fly better.");
    EXPECT_EQ(own.lesson.tolerances.size(), 2U);
}

TEST_F(LessonCheckTest, AMisspeltKeyIsAFaultAndAStrangeOneAWarning) {
    EXPECT_THAT(findings(withScript("\n\"situaton\":\"x\"")),
                ElementsAre("a.json:2:1: unknown field \"situaton\"; did you mean \"situation\"?"));
    const auto strange = check(withScript(R"("colour":"blue")"));
    EXPECT_TRUE(strange.isUsable());
    EXPECT_THAT(lines(strange),
                ElementsAre(testing::EndsWith(
                    "warning: unknown field \"colour\", which lessons do not have; remove it")));
    EXPECT_THAT(findings(withScript("\n\"ends\":{\"secnds\":3}")),
                ElementsAre("a.json:2:9: unknown field \"secnds\"; did you mean \"seconds\"?"));
}

TEST_F(LessonCheckTest, WhatIsMissingOrOfAnotherKindIsTold) {
    EXPECT_THAT(findings("{}"), ElementsAre("a.json:1:1: \"script\" is missing, so there is nothing to fly; "
                                            "write the script here, or the name of its file"));
    EXPECT_THAT(findings("[]"),
                ElementsAre("a.json:1:1: a lesson is wanted, an object with the key \"script\""));
    EXPECT_THAT(
        findings("{\"script\":3}"),
        ElementsAre(StartsWith("a.json:1:11: \"script\" must be an object, a list, or the name of a file")));
    EXPECT_THAT(findings(withScript("\n\"name\":3")),
                ElementsAre(StartsWith("a.json:2:8: \"name\" must be a text")));
    EXPECT_THAT(findings(withScript("\n\"situation\":\"\"")),
                ElementsAre("a.json:2:13: the name of the situation is empty; name a saved flight"));
    EXPECT_THAT(findings(withScript("\n\"ends\":3")),
                ElementsAre(StartsWith("a.json:2:8: \"ends\" must be an object")));
    EXPECT_THAT(findings("{\"script\":[],}"), ElementsAre(StartsWith("a.json:1:14: no valid JSON: ")));
    for (const auto* time : {"0", "-1", "1e9"}) {
        EXPECT_THAT(findings(withScript(std::string("\n\"ends\":{\"seconds\":") + time + "}")),
                    ElementsAre("a.json:2:19: this is no time to fly; write seconds, more than 0"));
    }
}

TEST_F(LessonCheckTest, FilesThatAreNotThereAreToldWhereTheyAreNamed) {
    const auto text = std::string(
        "\"no.json\" cannot be read: No such file or directory; names are relative to "
        "the lesson's folder");
    EXPECT_THAT(findings("{\"script\":\"no.json\"}"), ElementsAre("a.json:1:11: " + text));
    EXPECT_THAT(findings(withScript("\n\"tolerances\":\"no.json\"")), ElementsAre("a.json:2:14: " + text));
}

TEST_F(LessonCheckTest, FaultsOfPartsHaveTheirPlaces) {
    EXPECT_THAT(findings("{\n \"script\": [{\"id\":\"a\",\n  "
                         "\"condition_kind\":\"after_start\",\"condition\":{\"secnds\":0},"
                         "\"action_kind\":\"\",\"action\":{}}]}"),
                ElementsAre("a.json:3:47: unknown field \"secnds\"; did you mean \"seconds\"?"));
    folder.write("s.json", "[\n 3]");
    EXPECT_THAT(findings("{\"script\":\"s.json\"}"),
                ElementsAre(StartsWith("s.json:2:2: a trigger is wanted")));
    EXPECT_THAT(findings(withScript("\n\"tolerances\":[\n{\"id\":\"b\",\"kind\":\"bank\",\"bank_deg\":3}]")),
                ElementsAre(StartsWith("a.json:3:18: there is no tolerance of the kind \"bank\"")));
}

TEST_F(LessonCheckTest, TriggersThatTheScriptDoesNotHaveAreTold) {
    const std::string advice = "the script has no trigger with the id \"helo\"; did you mean \"hello\"?";
    EXPECT_THAT(findings(withScript("\n\"ends\":{\"trigger\":\"helo\"}")),
                ElementsAre("a.json:2:19: " + advice));
    EXPECT_THAT(
        findings(withScript("\n\"tolerances\":[{\"id\":\"b\",\"kind\":\"bank_not_exceeded\",\"bank_deg\":30,"
                            "\n\"to\":\"helo\"}]")),
        ElementsAre("a.json:3:6: " + advice));
}

TEST_F(LessonCheckTest, FixesAreLookedForInTheDatabase) {
    const auto file = readLessonFile(
        folder.write("a.json", R"({"script":[{"id":"r","condition_kind":"reaches_fix","condition":)"
                               R"({"fix":"xyzzy","within_nm":1},"action_kind":"","action":{}}]})"));
    const auto checked = checkLesson(file, [](const std::string&) { return std::nullopt; });
    EXPECT_FALSE(checked.isUsable());
    EXPECT_THAT(lines(checked),
                ElementsAre(testing::HasSubstr("the navigation database has no fix or navaid \"XYZZY\"")));
    EXPECT_TRUE(checkLesson(file).isUsable());
}

} // namespace
} // namespace tarnly::client
