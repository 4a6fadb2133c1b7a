#include "TarnlyTrack/Grade/ToleranceCheck.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.hpp"

namespace tarnly::track {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// "2:5: what is wrong" for each finding; warnings begin with "2:5: warning: ".
std::vector<std::string> findings(std::string_view text) {
    std::vector<std::string> result;
    for (const auto& [severity, place, words] : readTolerances(text).findings) {
        const bool isWarning = severity == ScriptFinding::Severity::warning;
        result.push_back(std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                         (isWarning ? "warning: " : "") + words);
    }
    return result;
}

/// Of a tolerance whose fields behind `kind` begin at column 1 of line 2.
std::vector<std::string> findingsIn(const std::string& kind, const std::string& fields) {
    return findings(R"([{"id":"a","kind":")" + kind + "\",\n" + fields + "}]");
}

const std::string kinds = "altitude_held, height_held, bank_not_exceeded, stable_at, time_between";

TEST(ToleranceCheck, EachFieldIsRead) {
    const auto checked = readTolerances(R"({"tolerances":[
        {"id":"a","name":"Level","kind":"altitude_held","feet":1500,"within_ft":100,"from":"b","from_s":-2,
         "to":"c","to_s":3.5},
        {"id":"h","kind":"height_held","feet":1000,"within_ft":0},
        {"id":"b","kind":"bank_not_exceeded","bank_deg":30},
        {"id":"s","kind":"stable_at","feet":500,"bank_deg":15,"pitch_at_least_deg":-5,"pitch_at_most_deg":5,
         "descent_fpm":1000,"gear_down":true,"flap_ratio":0.5},
        {"id":"t","kind":"time_between","from":"b","to":"c","at_least_s":30,"at_most_s":90}]})");
    EXPECT_THAT(checked.findings, IsEmpty());
    EXPECT_TRUE(checked.isUsable());
    ASSERT_EQ(checked.tolerances.size(), 5U);
    EXPECT_EQ(checked.tolerances[0], (Tolerance{.id = "a",
                                                .name = "Level",
                                                .kind = "altitude_held",
                                                .from = "b",
                                                .to = "c",
                                                .fromSeconds = -2,
                                                .toSeconds = 3.5,
                                                .feet = 1500,
                                                .withinFeet = 100}));
    EXPECT_EQ(checked.tolerances[1],
              (Tolerance{.id = "h", .kind = "height_held", .feet = 1000, .withinFeet = 0}));
    EXPECT_EQ(checked.tolerances[2], (Tolerance{.id = "b", .kind = "bank_not_exceeded", .bankDegrees = 30}));
    EXPECT_EQ(checked.tolerances[3], (Tolerance{.id = "s",
                                                .kind = "stable_at",
                                                .feet = 500,
                                                .bankDegrees = 15,
                                                .leastPitchDegrees = -5,
                                                .mostPitchDegrees = 5,
                                                .mostDescent = 1000,
                                                .gearDown = true,
                                                .leastFlapRatio = 0.5}));
    EXPECT_EQ(checked.tolerances[4], (Tolerance{.id = "t",
                                                .kind = "time_between",
                                                .from = "b",
                                                .to = "c",
                                                .atLeastSeconds = 30,
                                                .atMostSeconds = 90}));
}

TEST(ToleranceCheck, TheExampleIsFlawless) {
    const auto checked = readTolerances(
        tarnly::test::contentOf(std::filesystem::path(TARNLY_DOCS) / "tolerances-pattern.json"));
    EXPECT_THAT(checked.findings, IsEmpty());
    std::set<std::string> used;
    for (const auto& tolerance : checked.tolerances)
        used.insert(tolerance.kind);
    EXPECT_THAT(used, ElementsAre("altitude_held", "bank_not_exceeded", "stable_at", "time_between"));
}

TEST(ToleranceCheck, TheListAloneWillDo) {
    EXPECT_EQ(readTolerances(R"([{"id":"b","kind":"bank_not_exceeded","bank_deg":30}])").tolerances.size(),
              1U);
}

TEST(ToleranceCheck, AnUnknownKindIsTold) {
    EXPECT_THAT(findings(R"([{"id":"a","kind":"altitude-held"}])"),
                ElementsAre("1:19: there is no tolerance of the kind \"altitude-held\"; did you mean "
                            "\"altitude_held\"?"));
    EXPECT_THAT(findings(R"([{"id":"a","kind":"xyz"}])"),
                ElementsAre("1:19: there is no tolerance of the kind \"xyz\"; the kinds are " + kinds));
    EXPECT_THAT(findings(R"([{"id":"a"}])"), ElementsAre("1:2: \"kind\" is missing; the kinds are " + kinds));
}

TEST(ToleranceCheck, AMisspeltFieldIsTold) {
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_degrees":30)"),
                ElementsAre("2:1: unknown field \"bank_degrees\"; did you mean \"bank_deg\"?"));
    EXPECT_THAT(findingsIn("stable_at", R"("feet":500,"bank_deg":15,"gear-down":true)"),
                ElementsAre("2:26: warning: unknown field \"gear-down\", which tarnly-track ignores; did you "
                            "mean \"gear_down\"?"));
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":30,"feet":5)"),
                ElementsAre("2:15: warning: unknown field \"feet\", which tarnly-track ignores; remove it"));
}

TEST(ToleranceCheck, AWarningDoesNotKeepFromGrading) {
    const auto checked = readTolerances(R"([{"id":"a","kind":"bank_not_exceeded","bank_deg":3,"zzzz":1}])");
    EXPECT_EQ(checked.findings.size(), 1U);
    EXPECT_TRUE(checked.isUsable());
    EXPECT_FALSE(readTolerances(R"([{"id":"a","kind":"bank_not_exceeded"}])").isUsable());
}

TEST(ToleranceCheck, WhatIsIgnoredDoesNotCount) {
    const auto checked = readTolerances(
        R"([{"id":"t","kind":"time_between","from":"b","to":"c","at_most_s":9,"from_s":2,"to_s":4}])");
    EXPECT_EQ(checked.findings.size(), 2U);
    EXPECT_TRUE(checked.isUsable());
    EXPECT_FALSE(checked.tolerances.front().fromSeconds);
    EXPECT_FALSE(checked.tolerances.front().toSeconds);
}

TEST(ToleranceCheck, AMissingFieldIsTold) {
    EXPECT_THAT(
        findingsIn("altitude_held", R"("feet":500)"),
        ElementsAre("1:2: \"within_ft\" is missing, so altitude_held cannot be graded; it is a number"));
    EXPECT_THAT(findingsIn("time_between", R"("at_most_s":5)"),
                ElementsAre("1:2: \"from\" is missing, so time_between cannot be graded; it is a text",
                            "1:2: \"to\" is missing, so time_between cannot be graded; it is a text"));
    EXPECT_THAT(findings(R"([{"kind":"bank_not_exceeded","bank_deg":3}])"),
                ElementsAre("1:2: \"id\" is missing, so bank_not_exceeded cannot be graded; it is a text"));
    EXPECT_THAT(findingsIn("time_between", R"("from":"a","to":"b")"),
                ElementsAre("1:2: time_between needs at least one of at_least_s, at_most_s"));
    EXPECT_THAT(findingsIn("stable_at", R"("feet":500)"),
                ElementsAre("1:2: stable_at needs at least one of bank_deg, pitch_at_least_deg, "
                            "pitch_at_most_deg, descent_fpm, gear_down, flap_ratio"));
}

TEST(ToleranceCheck, AValueOfAnotherTypeIsTold) {
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":"30")"),
                ElementsAre("2:12: \"bank_deg\" must be a number, not a text; write 30, without quotation "
                            "marks"));
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":null)"),
                ElementsAre("2:12: \"bank_deg\" must be a number, not null"));
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":1,"name":null)"),
                ElementsAre("2:21: \"name\" must be a text, not null"));
    EXPECT_THAT(findingsIn("stable_at", R"("feet":500,"gear_down":1)"),
                ElementsAre("2:24: \"gear_down\" must be true or false, not a number; write true or false, "
                            "without quotation marks"));
    EXPECT_THAT(findings(R"([{"id":7,"kind":"bank_not_exceeded","bank_deg":3}])"),
                ElementsAre("1:8: \"id\" must be a text, not a number; put it in quotation marks"));
    EXPECT_THAT(findings(R"([{"id":"a","kind":5}])"),
                ElementsAre("1:19: \"kind\" must be a text, not a number; put it in quotation marks"));
    EXPECT_THAT(findings("[5]"), ElementsAre("1:2: a tolerance is wanted, an object with the fields id, kind "
                                             "and what the kind needs; the kinds are " +
                                             kinds));
}

TEST(ToleranceCheck, ASignThatMeansNothingIsTold) {
    EXPECT_THAT(findingsIn("altitude_held", R"("feet":-10,"within_ft":-100)"),
                ElementsAre("2:24: \"within_ft\" is never below 0; give it without the sign"));
    EXPECT_THAT(findingsIn("height_held", R"("feet":-10,"within_ft":1)"),
                ElementsAre("2:8: \"feet\" is never below 0; give it without the sign"));
    EXPECT_THAT(findingsIn("stable_at", R"("feet":500,"bank_deg":-5,"descent_fpm":-700)"),
                ElementsAre("2:23: \"bank_deg\" is never below 0; give it without the sign",
                            "2:40: \"descent_fpm\" is never below 0; give it without the sign"));
    EXPECT_THAT(findingsIn("time_between", R"("from":"a","to":"b","at_least_s":-2,"at_most_s":-1)"),
                ElementsAre("2:34: \"at_least_s\" is never below 0; give it without the sign",
                            "2:49: \"at_most_s\" is never below 0; give it without the sign"));
}

TEST(ToleranceCheck, ValuesThatNoFlightMeetsAreTold) {
    EXPECT_THAT(findingsIn("stable_at", R"("feet":500,"pitch_at_least_deg":5,"pitch_at_most_deg":4)"),
                ElementsAre("2:55: the least is more than the most, so it is never met; exchange the two"));
    EXPECT_THAT(findingsIn("time_between", R"("from":"a","to":"b","at_least_s":9,"at_most_s":8)"),
                ElementsAre("2:48: the least is more than the most, so it is never met; exchange the two"));
    EXPECT_THAT(findingsIn("stable_at", R"("feet":500,"flap_ratio":50)"),
                ElementsAre("2:25: flaps are between 0, up, and 1, fully down; write 0.5 for half"));
    EXPECT_THAT(findingsIn("stable_at", R"("feet":50,"bank_deg":5)"),
                ElementsAre("2:8: an approach is judged down to 50 ft AGL, where the flare begins; give a "
                            "greater height"));
}

TEST(ToleranceCheck, APartThatEndsBeforeItBeginsIsTold) {
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":5,"from_s":9,"to_s":8)"),
                ElementsAre("2:32: the part ends before it begins; exchange the two"));
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":5,"from":"a","from_s":9,"to":"a")"),
                ElementsAre("2:34: the part ends before it begins; exchange the two"));
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":5,"from":"a","from_s":9,"to":"b")"), IsEmpty());
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":5,"from_s":9,"to":"a","to_s":2)"), IsEmpty());
    EXPECT_THAT(findingsIn("time_between", R"("from":"a","to":"a","at_most_s":9)"),
                ElementsAre("2:17: no time passes from a trigger to itself; name another one"));
}

TEST(ToleranceCheck, AnEndThatIsProbablyMeantAfterTheBeginningIsTold) {
    EXPECT_THAT(findingsIn("bank_not_exceeded", R"("bank_deg":5,"from":"a","to_s":2)"),
                ElementsAre("2:32: warning: without \"to\" it is a time of the recording's clock; for one "
                            "after \"a\" add \"to\":\"a\""));
}

TEST(ToleranceCheck, WhatStandsThereTwiceIsTold) {
    EXPECT_THAT(findings(R"([{"id":"a","kind":"bank_not_exceeded","bank_deg":3},)"
                         "\n"
                         R"({"id":"a","kind":"bank_not_exceeded","bank_deg":4}])"),
                ElementsAre("2:7: the id \"a\" is another tolerance's already; give this one another id"));
    EXPECT_THAT(
        findingsIn("bank_not_exceeded", R"("bank_deg":3,"bank_deg":4)"),
        ElementsAre("2:14: warning: \"bank_deg\" is given twice, and only the last one counts; remove "
                    "one"));
}

TEST(ToleranceCheck, WhatHasNoTolerancesIsTold) {
    const std::string wanted = "a list of tolerances is wanted, or an object {\"tolerances\":[…]}";
    EXPECT_THAT(findings("[]"), ElementsAre("1:1: the list is empty; add a tolerance"));
    EXPECT_THAT(findings(R"({"tolerances":[]})"), ElementsAre("1:15: the list is empty; add a tolerance"));
    EXPECT_THAT(findings("7"), ElementsAre("1:1: " + wanted));
    EXPECT_THAT(findings("{}"),
                ElementsAre("1:1: \"tolerances\" is missing, so nothing can be graded; it is a "
                            "list of tolerances"));
    EXPECT_THAT(findings(R"({"tolerances":{}})"), ElementsAre("1:15: " + wanted));
    EXPECT_THAT(findings(R"({"tolerance":[]})"),
                ElementsAre("1:2: unknown field \"tolerance\"; did you mean \"tolerances\"?"));
}

TEST(ToleranceCheck, WhatIsNoJsonIsTold) {
    for (const std::string text : {"", "[{]", "[NaN]", "[1e999]", "[{\"id\":\"a\",}]"}) {
        const auto found = findings(text);
        ASSERT_EQ(found.size(), 1U) << text;
        EXPECT_THAT(found.front(), ::testing::HasSubstr("no valid JSON: ")) << text;
        EXPECT_FALSE(readTolerances(text).isUsable());
    }
    EXPECT_THAT(findings("[{\"id\":\"a\",\n}]").front(), ::testing::StartsWith("2:1: no valid JSON: "));
    const auto deep = findings(std::string(100, '['));
    ASSERT_EQ(deep.size(), 1U);
    EXPECT_THAT(deep.front(), ::testing::StartsWith("1:65: no valid JSON: "));
}

} // namespace
} // namespace tarnly::track
