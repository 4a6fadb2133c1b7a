#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <set>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyCore/Script/ConditionFields.hpp"
#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"
#include "TarnlyPlatform/Json/JsonText.hpp"

namespace tarnly {
namespace {

std::optional<Coordinate> everywhere(const std::string&) { return Coordinate{}; }

bool hasError(std::string_view script) {
    const auto findings = checkScript(script, everywhere);
    return std::ranges::any_of(findings, [](const ScriptFinding& finding) {
        return finding.severity == ScriptFinding::Severity::error;
    });
}

/// Whether companions take the script, and each of its triggers can fire: found by the reader and the engine
/// that companions have. A sample that all delays, crossings and fixes wait for comes again and again.
bool canAllFire(const std::string& script) {
    try {
        auto request = decodeJsonText<LoadScriptRequest>(R"({"triggers":)" + script + "}");
        const auto count = request.triggers.size();
        std::set<std::string> ids;
        for (const auto& trigger : request.triggers)
            ids.insert(trigger.id);
        auto engine = ScriptTriggerMapper::toEngine(std::move(request), everywhere);
        for (int number = 0; number < 6; ++number) {
            const double feet = number % 2 == 0 ? -1e6 : 1e6;
            engine.evaluate({.elapsed = 1e6 * number,
                             .lat = 0,
                             .lon = 0,
                             .altFt = feet,
                             .aglFt = std::max(feet, 0.0),
                             .gearDown = true});
        }
        return ids.size() == count && engine.fired().size() == count;
    } catch (const std::exception&) {
        return false;
    }
}

class RandomScripts {
  public:
    std::string script() {
        std::string text = "[";
        for (auto left = random_() % 4 + 1; left > 0; --left)
            text += trigger() + (left > 1 ? "," : "");
        return text + "]";
    }

  private:
    std::string trigger() {
        const auto kind = oneOf({"reaches_fix", "crosses_agl", "crosses_altitude", "after_gear_down",
                                 "after_start", "after_trigger", "after_trigger", "after_landing"},
                                50);
        std::string text;
        add(text, "id", quotedId());
        add(text, "condition_kind", "\"" + kind + "\"");
        add(text, "action_kind", "\"speak\"");
        add(text, "action", rarely() ? R"({"a":[]})" : R"({"a":null})");
        add(text, "condition", condition());
        return "{" + text + "}";
    }

    std::string condition() {
        std::string text;
        add(text, "fix", value("\"A\""));
        add(text, "within_nm", value("1"));
        add(text, "feet", value("500"));
        add(text, "climbing", value(random_() % 2 == 0 ? "true" : "false"));
        add(text, "seconds", value("1"));
        add(text, "after_trigger_id", value(quotedId()));
        return "{" + text + "}";
    }

    void add(std::string& text, const std::string& key, const std::string& value) {
        if (rarely()) return;
        text += (text.empty() ? "\"" : ",\"") + key + (rarely() ? "x" : "") + "\":" + value;
    }

    std::string value(const std::string& good) {
        return rarely() ? oneOf({"null", "1", "true", "\"1\"", "{}", "[]", "-1", "0"}, 8) : good;
    }
    std::string quotedId() { return "\"" + oneOf({"a", "b", "c", "d", "e", "f"}, 6) + "\""; }
    bool rarely() { return random_() % 60 == 0; }

    std::string oneOf(const std::vector<std::string>& values, std::size_t spread) {
        const auto chosen = random_() % spread;
        return values[chosen < values.size() ? chosen : chosen % (values.size() - 1)];
    }

    std::mt19937 random_{42};
};

TEST(ScriptCheck, FindsNoErrorExactlyWhereAllTriggersCanFire) {
    RandomScripts scripts;
    int fine = 0;
    int faulty = 0;
    for (int round = 0; round < 4'000; ++round) {
        const auto script = scripts.script();
        const bool can = canAllFire(script);
        ASSERT_EQ(!hasError(script), can) << script;
        ++(can ? fine : faulty);
    }
    EXPECT_GT(fine, 200);
    EXPECT_GT(faulty, 200);
}

TEST(ScriptCheck, FindsAnErrorInEachOfTheBadScripts) {
    const auto folder = std::filesystem::path(TARNLY_BAD_SCRIPTS);
    int scripts = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        EXPECT_TRUE(hasError(test::contentOf(file))) << file.path();
        ++scripts;
    }
    EXPECT_GE(scripts, 20);
}

} // namespace
} // namespace tarnly
