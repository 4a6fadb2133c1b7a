#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"

#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/ScriptCheck/ChainCheck.hpp"
#include "TarnlyCore/ScriptCheck/ConditionValueCheck.hpp"
#include "TarnlyCore/ScriptCheck/NearName.hpp"
#include "TarnlyCore/ScriptCheck/SyntaxCure.hpp"
#include "TarnlyCore/ScriptCheck/TriggerCheck.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

/// The list of triggers; null where there is none, which is told.
const PlacedJson* triggersOf(const PlacedJson& script, ScriptFindings& findings) {
    if (script.value.is_array()) return &script;
    const auto key = std::get<0>(fieldsOf<LoadScriptRequest>()).key;
    const auto* triggers = script.find(key);
    if (triggers != nullptr && triggers->value.is_array()) return triggers;
    const auto wanted = "a list of triggers is wanted, or an object {\"" + std::string(key) + "\":[…]}";
    for (const auto& [written, at] : script.keys) {
        if (triggers != nullptr || !nearName(written, std::span(&key, 1))) continue;
        findings.error(at, "unknown field " + inQuotes(written) + "; did you mean " + inQuotes(key) + "?");
        return nullptr;
    }
    findings.error(triggers == nullptr ? script.at : triggers->at, wanted);
    return nullptr;
}

void checkFixes(std::span<const CheckedTrigger> triggers, const FixResolver& fixPosition,
                ScriptFindings& findings) {
    std::map<std::string, bool> known;
    for (const auto& trigger : triggers) {
        const auto& condition = trigger.condition;
        if (!condition || condition->kind != TriggerConditionKind::reachesFix || !condition->fix) continue;
        const auto at = trigger.placeOf(&TriggerCondition::fix);
        const auto [found, isNew] = known.try_emplace(upperCased(*condition->fix), true);
        if (isNew && known.size() == ProtocolLimits::fixesAScript + 1) {
            findings.error(at, "companions take at most " + std::to_string(ProtocolLimits::fixesAScript) +
                                   " different fixes, and this one is beyond; split the script");
        }
        if (isNew && fixPosition) found->second = fixPosition(found->first).has_value();
        if (!found->second) {
            findings.error(at, "the navigation database has no fix or navaid " + inQuotes(found->first) +
                                   ", so it is never reached; look at its spelling");
        }
    }
}

void checkTriggers(const PlacedJson& list, const FixResolver& fixPosition, ScriptFindings& findings) {
    if (list.elements.size() > ProtocolLimits::triggersAScript) {
        findings.error(list.at, std::to_string(list.elements.size()) + " triggers, and companions take " +
                                    std::to_string(ProtocolLimits::triggersAScript) +
                                    " at most; split the script");
    }
    std::vector<CheckedTrigger> triggers;
    triggers.reserve(list.elements.size());
    for (const auto& element : list.elements) {
        triggers.push_back(checkTrigger(element, findings));
        const auto& condition = triggers.back().condition;
        if (condition && isComplete(*condition)) checkConditionValues(triggers.back(), findings);
    }
    checkChains(triggers, findings);
    checkFixes(triggers, fixPosition, findings);
}

} // namespace

std::vector<ScriptFinding> checkScript(std::string_view text, const FixResolver& fixPosition) {
    ScriptFindings findings;
    try {
        const auto script = parsePlacedJson(text);
        if (const auto* triggers = triggersOf(script, findings))
            checkTriggers(*triggers, fixPosition, findings);
    } catch (const JsonTextError& error) {
        findings.error(error.at(),
                       std::string("no valid JSON: ") + error.what() + syntaxCure(text, error.at()));
    }
    return std::move(findings).inOrder(text);
}

} // namespace tarnly
