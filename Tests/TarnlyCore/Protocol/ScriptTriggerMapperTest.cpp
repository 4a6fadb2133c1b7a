#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

using ScriptTriggerMapper::MappingError;

MappingError unknownKind(const std::string& kind) {
    return MappingError(MappingError::Case::unknownConditionKind, kind);
}

/// `condition` as JSON text, as it comes from the client.
TriggerCondition mapped(const std::string& kind, std::string_view condition) {
    return ScriptTriggerMapper::toCondition(
        kind, decodeJson<std::map<std::string, JsonScalar>>(parseJson(condition)));
}

MappingError failure(const std::string& kind) {
    try {
        mapped(kind, "{}");
    } catch (const MappingError& error) {
        return error;
    }
    ADD_FAILURE() << kind << " is a kind";
    return unknownKind("");
}

TEST(ScriptTriggerMapper, EveryWireKindHasItsCondition) {
    const std::pair<const char*, TriggerConditionKind> kinds[] = {
        {"reaches_fix", TriggerConditionKind::reachesFix},
        {"crosses_agl", TriggerConditionKind::crossesAgl},
        {"crosses_altitude", TriggerConditionKind::crossesAltitude},
        {"after_gear_down", TriggerConditionKind::afterGearDown},
        {"after_start", TriggerConditionKind::afterStart},
        {"after_trigger", TriggerConditionKind::afterTrigger}};
    for (const auto& [wire, kind] : kinds)
        EXPECT_EQ(mapped(wire, "{}"), TriggerCondition{.kind = kind}) << wire;
}

TEST(ScriptTriggerMapper, AnythingElseIsAnUnknownKind) {
    for (const auto* kind : {"after_landing", "reachesFix", "Reaches_fix", "REACHES_FIX", " reaches_fix",
                             "reaches_fix ", "after_start_", ""}) {
        EXPECT_EQ(failure(kind), unknownKind(kind));
        EXPECT_EQ(failure(kind).payload(), kind);
    }
    EXPECT_FALSE(failure("a") == failure("b"));
}

TEST(ScriptTriggerMapper, TheErrorNamesTheKindAsReceived) {
    EXPECT_STREQ(failure("after_landing").what(), R"(unknownConditionKind("after_landing"))");
    EXPECT_STREQ(failure("reachesFix").what(), R"(unknownConditionKind("reachesFix"))");
    EXPECT_STREQ(failure("").what(), R"(unknownConditionKind(""))");
    EXPECT_STREQ(failure("say \"hi\"").what(), R"(unknownConditionKind("say \"hi\""))");
}

TEST(ScriptTriggerMapper, AFixKeepsItsLetterCase) {
    EXPECT_EQ(mapped("reaches_fix", R"({"fix": "ksfo", "within_nm": 2})"),
              (TriggerCondition{.kind = TriggerConditionKind::reachesFix, .fix = "ksfo", .withinNm = 2}));
}

TEST(ScriptTriggerMapper, EveryFieldIsReadWhateverTheKind) {
    constexpr auto condition =
        R"({"fix": "X", "within_nm": 1.5, "feet": -10, "climbing": false, "seconds": 30, "after_trigger_id": "a"})";
    for (const auto* kind : {"reaches_fix", "crosses_agl", "after_start"}) {
        const auto expected = TriggerCondition{.kind = mapped(kind, "{}").kind,
                                               .fix = "X",
                                               .withinNm = 1.5,
                                               .feet = -10,
                                               .climbing = false,
                                               .seconds = 30,
                                               .afterTriggerId = "a"};
        EXPECT_EQ(mapped(kind, condition), expected) << kind;
    }
}

TEST(ScriptTriggerMapper, UnusedFieldsAreKept) {
    EXPECT_EQ(mapped("after_start", R"({"seconds": 30, "fix": "X"})"),
              (TriggerCondition{.kind = TriggerConditionKind::afterStart, .fix = "X", .seconds = 30}));
}

TEST(ScriptTriggerMapper, AValueOfTheWrongKindIsAbsent) {
    EXPECT_EQ(mapped("crosses_agl", R"({"feet": "1500", "climbing": true})"),
              (TriggerCondition{.kind = TriggerConditionKind::crossesAgl, .climbing = true}));
    const TriggerCondition empty{.kind = TriggerConditionKind::crossesAgl};
    for (const auto* value : {"1", "true", "null"}) {
        EXPECT_EQ(mapped("crosses_agl", R"({"fix": )" + std::string(value) + "}"), empty) << value;
        EXPECT_EQ(mapped("crosses_agl", R"({"after_trigger_id": )" + std::string(value) + "}"), empty)
            << value;
    }
    for (const auto* value : {R"("1")", "true", "null"}) {
        EXPECT_EQ(mapped("crosses_agl", R"({"within_nm": )" + std::string(value) + "}"), empty) << value;
        EXPECT_EQ(mapped("crosses_agl", R"({"feet": )" + std::string(value) + "}"), empty) << value;
        EXPECT_EQ(mapped("crosses_agl", R"({"seconds": )" + std::string(value) + "}"), empty) << value;
    }
    for (const auto* value : {R"("true")", "1", "null"}) {
        EXPECT_EQ(mapped("crosses_agl", R"({"climbing": )" + std::string(value) + "}"), empty) << value;
    }
}

TEST(ScriptTriggerMapper, UnknownKeysAreIgnored) {
    EXPECT_EQ(mapped("after_start", R"({"Seconds": 1, "withinNm": 2, "": "x"})"),
              (TriggerCondition{.kind = TriggerConditionKind::afterStart}));
}

/// A script of `count` triggers, each made by `make(trigger, number)`.
LoadScriptRequest scriptOf(std::size_t count, const auto& make) {
    LoadScriptRequest script;
    script.triggers.resize(count);
    for (std::size_t number = 0; number < count; ++number) {
        script.triggers[number].conditionKind = "after_start";
        make(script.triggers[number], number);
    }
    return script;
}

/// Why there is no engine of it.
std::string refusal(LoadScriptRequest script) {
    const FixResolver nowhere = [](const std::string&) { return std::nullopt; };
    try {
        ScriptTriggerMapper::toEngine(std::move(script), nowhere);
    } catch (const ProtocolLimitError& error) {
        return error.what();
    }
    return "none";
}

TEST(ScriptLimits, TriggersAreCounted) {
    const auto plain = [](const auto&, std::size_t) {};
    EXPECT_EQ(refusal(scriptOf(ProtocolLimits::triggersAScript, plain)), "none");
    EXPECT_EQ(refusal(scriptOf(ProtocolLimits::triggersAScript + 1, plain)),
              "limitExceeded(\"load_script takes at most 100000 triggers\")");
}

TEST(ScriptLimits, FixesCountOnceWhateverTheirLetterCase) {
    const auto namesFix = [](std::size_t different) {
        return [different](auto& trigger, std::size_t number) {
            trigger.conditionKind = "reaches_fix";
            const std::string letter = number < different ? "f" : "F";
            trigger.condition["fix"] = {letter + std::to_string(number % different)};
        };
    };
    constexpr auto most = ProtocolLimits::fixesAScript;
    EXPECT_EQ(refusal(scriptOf(2 * most, namesFix(most))), "none");
    EXPECT_EQ(refusal(scriptOf(most + 1, namesFix(most + 1))),
              "limitExceeded(\"load_script takes at most 10000 different fixes\")");
}

TEST(ScriptLimits, IdsAndKindsAreShort) {
    const auto with = [](const auto& set) {
        return scriptOf(1, [&](auto& trigger, std::size_t) { set(trigger); });
    };
    const std::string longest(ProtocolLimits::idSize, 'x');
    EXPECT_EQ(refusal(with([&](auto& trigger) {
                  trigger.id = trigger.actionKind = longest;
                  trigger.condition = {{"fix", {longest}}, {"after_trigger_id", {longest}}};
                  trigger.action["text"] = {longest + longest};
              })),
              "none");
    const std::string tooLong = longest + "x";
    const std::string expected =
        "limitExceeded(\"load_script takes at most 1024 bytes for an id, a fix or a kind\")";
    EXPECT_EQ(refusal(with([&](auto& trigger) { trigger.id = tooLong; })), expected);
    EXPECT_EQ(refusal(with([&](auto& trigger) { trigger.conditionKind = tooLong; })), expected);
    EXPECT_EQ(refusal(with([&](auto& trigger) { trigger.actionKind = tooLong; })), expected);
    EXPECT_EQ(refusal(with([&](auto& trigger) { trigger.condition["fix"] = {tooLong}; })), expected);
    EXPECT_EQ(refusal(with([&](auto& trigger) { trigger.condition["after_trigger_id"] = {tooLong}; })),
              expected);
}

} // namespace
} // namespace tarnly
