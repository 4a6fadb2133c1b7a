#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyCore/Script/ConditionFields.hpp"
#include "TarnlyCore/ScriptCheck/Findings.hpp"

namespace tarnly {
namespace {

using test::findingsIn;
using test::withCondition;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> findings(const std::string& kind, const std::string& condition) {
    return findingsIn(withCondition(kind, condition));
}

/// Without the place.
std::vector<std::string> texts(const std::string& script) {
    auto all = findingsIn(script);
    for (auto& text : all)
        text.erase(0, text.find(": ") + 2);
    return all;
}

TEST(TriggerCheck, NothingIsFoundInAGoodTrigger) {
    EXPECT_THAT(findings("crosses_agl", R"({"feet":500,"climbing":false})"), IsEmpty());
    EXPECT_THAT(findings("after_start", R"({"seconds":0,"fix":null})"), IsEmpty());
    EXPECT_THAT(findings("reaches_fix", R"({"fix":"ridge","within_nm":0.25})"), IsEmpty());
}

TEST(TriggerCheck, AMisspeltFieldIsToldAtItsKeyWithWhatWasMeant) {
    EXPECT_THAT(
        findingsIn("[\n  {\"id\": \"a\", \"conditon_kind\": \"after_start\",\n"
                   "   \"condition\": {\"secnds\": 5}, \"condition_kind\": \"after_start\",\n"
                   "   \"action_kind\": \"speak\", \"actoin\": {}}]"),
        ElementsAre("2:15: warning: unknown field \"conditon_kind\", which companions ignore; did you "
                    "mean \"condition_kind\"?",
                    "3:18: unknown field \"secnds\"; did you mean \"seconds\"?",
                    "4:28: unknown field \"actoin\"; did you mean \"action\"?"));
}

TEST(TriggerCheck, AMissingFieldIsToldWhereItsObjectBegins) {
    EXPECT_THAT(
        findings("crosses_agl", R"({"feet":500})"),
        ElementsAre("1:54: \"climbing\" is missing, so crosses_agl never holds; it is true or false"));
    EXPECT_THAT(
        findingsIn(R"([ {"id":"a","condition_kind":"after_start","condition":{"seconds":1},"action":{}}])"),
        ElementsAre("1:3: \"action_kind\" is missing, so companions refuse the whole script; it is a "
                    "text"));
}

TEST(TriggerCheck, AValueOfAnotherKindIsToldWithWhatToWrite) {
    EXPECT_THAT(findings("crosses_agl", R"({"feet":"500","climbing":1})"),
                ElementsAre("1:62: \"feet\" must be a number, not a text; write 500, without quotation marks",
                            "1:79: \"climbing\" must be true or false, not a number; write true or false, "
                            "without quotation marks"));
    EXPECT_THAT(findings("reaches_fix", R"({"fix":7,"within_nm":null})"),
                ElementsAre("1:61: \"fix\" must be a text, not a number; put it in quotation marks",
                            "1:75: \"within_nm\" must be a number, not null"));
    EXPECT_THAT(
        texts(R"([{"id":1,"condition_kind":"after_start","condition":{"seconds":1},)"
              R"("action_kind":null,"action":[]}])"),
        ElementsAre("\"id\" must be a text, not a number; put it in quotation marks",
                    "\"action_kind\" must be a text, not null", "\"action\" must be an object, not a list"));
}

TEST(TriggerCheck, ListsAndObjectsAmongTheValuesAreTold) {
    EXPECT_THAT(texts(R"([{"id":"a","condition_kind":"after_start","condition":{"seconds":[1]},)"
                      R"("action_kind":"b","action":{"c":{}}}])"),
                ElementsAre("\"seconds\" must be a text, a number, true, false or null, not a list, or "
                            "companions refuse the whole script",
                            "\"c\" must be a text, a number, true, false or null, not an object, or "
                            "companions refuse the whole script"));
}

TEST(TriggerCheck, WhatIsNoObjectIsNoTrigger) {
    EXPECT_THAT(findingsIn("[7]"), ElementsAre("1:2: a trigger is wanted, an object with the fields id, "
                                               "condition_kind, condition, action_kind, action"));
}

TEST(TriggerCheck, AKindThatDoesNotExistIsTold) {
    EXPECT_THAT(findings("crosses_alt", "{}"),
                ElementsAre("1:74: there is no condition of the kind \"crosses_alt\"; did you mean "
                            "\"crosses_altitude\"?"));
    EXPECT_THAT(findings("Reaches-Fix", "{}"),
                ElementsAre("1:74: there is no condition of the kind \"Reaches-Fix\"; did you mean "
                            "\"reaches_fix\"?"));
    EXPECT_THAT(findings("xyz", "{}"),
                ElementsAre("1:74: there is no condition of the kind \"xyz\"; the kinds are reaches_fix, "
                            "crosses_agl, crosses_altitude, after_gear_down, after_start, after_trigger"));
}

TEST(TriggerCheck, WhatDoesNothingIsAWarning) {
    EXPECT_THAT(findings("after_start", R"({"seconds":1,"feet":2,"colour":"red","seconds":3})"),
                ElementsAre("1:67: warning: \"feet\" means nothing to after_start; remove it, or choose "
                            "another condition_kind",
                            "1:76: warning: unknown field \"colour\", which companions ignore; remove it",
                            "1:91: warning: \"seconds\" is given twice, and only the last one counts; remove "
                            "one"));
}

TEST(TriggerCheck, ValuesThatCanHardlyBeMeantAreTold) {
    EXPECT_THAT(findings("reaches_fix", R"({"fix":"","within_nm":-1})"),
                ElementsAre("1:61: the fix is empty, so it is never reached; name one",
                            "1:76: no distance is below 0, so the fix is never reached; give it a quarter of "
                            "a mile or more"));
    EXPECT_THAT(findings("reaches_fix", R"({"fix":"A ","within_nm":0.01})").size(), 2U);
    EXPECT_THAT(findings("crosses_altitude", R"({"feet":-1,"climbing":true})"), IsEmpty());
    for (const auto* kind : {"after_start", "after_gear_down"})
        EXPECT_THAT(findings(kind, R"({"seconds":-1})").size(), 1U);
    EXPECT_THAT(texts(R"([{"id":"","condition_kind":"after_start","condition":{"seconds":1},)"
                      R"("action_kind":"b","action":{}}])"),
                ElementsAre("warning: the id is empty; name what fires"));
}

TEST(TriggerCheck, NothingCrossesTheGround) {
    const auto below = ElementsAre(
        "1:62: no height above the ground is below 0, so this one never fires; for an altitude choose the "
        "condition_kind crosses_altitude");
    EXPECT_THAT(findings("crosses_agl", R"({"feet":-1,"climbing":true})"), below);
    EXPECT_THAT(findings("crosses_agl", R"({"feet":-1,"climbing":false})"), below);
    EXPECT_THAT(findings("crosses_agl", R"({"feet":0,"climbing":true})"),
                ElementsAre("1:62: nothing climbs through the ground from below, so this one never fires; "
                            "give it 20 feet or more"));
    EXPECT_THAT(findings("crosses_agl", R"({"feet":0,"climbing":false})"),
                ElementsAre("1:62: warning: an aircraft on its wheels may show a height above 0, and then "
                            "never fires this; give it a few feet more"));
    EXPECT_THAT(findings("crosses_agl", R"({"feet":0.5,"climbing":true})"), IsEmpty());
}

TEST(TriggerCheck, ValuesOfAnotherWorldAreTold) {
    for (const auto* kind : {"crosses_agl", "crosses_altitude"}) {
        EXPECT_THAT(findings(kind, R"({"feet":500000,"climbing":true})"), IsEmpty());
        EXPECT_THAT(findings(kind, R"({"feet":500001,"climbing":true})").size(), 1U);
    }
    EXPECT_THAT(findings("crosses_altitude", R"({"feet":-5000,"climbing":true})"), IsEmpty());
    EXPECT_THAT(findings("crosses_altitude", R"({"feet":-5001,"climbing":true})").size(), 1U);
    EXPECT_THAT(findings("reaches_fix", R"({"fix":"A","within_nm":10799})"), IsEmpty());
    EXPECT_THAT(findings("reaches_fix", R"({"fix":"A","within_nm":10800})").size(), 1U);
    EXPECT_THAT(findings("after_start", R"({"seconds":86400})"), IsEmpty());
    EXPECT_THAT(findings("after_start", R"({"seconds":86401})").size(), 1U);
}

TEST(TriggerCheck, TextsThatCompanionsDoNotTakeForTheirLengthAreTold) {
    const std::string most(1024, 'a');
    EXPECT_THAT(findings("reaches_fix", R"({"fix":")" + most + R"(","within_nm":1})"), IsEmpty());
    EXPECT_THAT(findings("after_start", R"({"seconds":1,"fix":")" + most + R"(a"})").size(), 2U);
    EXPECT_THAT(findings("reaches_fix", R"({"fix":")" + most + R"(a","within_nm":1})"),
                ElementsAre("1:61: \"fix\" has 1025 bytes, and companions take 1024 at most; shorten it"));
}

TEST(TriggerCheck, EveryKindNeedsItsFields) {
    TriggerConditionKind::find([](TriggerConditionKind::Case kind) {
        const std::string name(ScriptTriggerMapper::wireName(kind));
        int needed = 0;
        forEachConditionField([&](const auto& field) { needed += field.isNeededBy(kind) ? 1 : 0; });
        EXPECT_GT(needed, 0) << name;
        EXPECT_EQ(findings(name, "{}").size(), static_cast<std::size_t>(needed)) << name;
        return false;
    });
}

} // namespace
} // namespace tarnly
