#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"

#include <cstddef>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "TarnlyCore/Script/ConditionFields.hpp"

namespace tarnly::ScriptTriggerMapper {

std::string_view wireName(TriggerConditionKind::Case kind) {
    switch (kind) {
        case TriggerConditionKind::reachesFix:
            return "reaches_fix";
        case TriggerConditionKind::crossesAgl:
            return "crosses_agl";
        case TriggerConditionKind::crossesAltitude:
            return "crosses_altitude";
        case TriggerConditionKind::afterGearDown:
            return "after_gear_down";
        case TriggerConditionKind::afterStart:
            return "after_start";
        case TriggerConditionKind::afterTrigger:
            return "after_trigger";
    }
    return {};
}

std::optional<TriggerConditionKind> kindNamed(std::string_view name) {
    return TriggerConditionKind::find([&](auto which) { return wireName(which) == name; });
}

namespace {

TriggerConditionKind kindOf(const std::string& name) {
    const auto kind = kindNamed(name);
    if (!kind) throw MappingError(MappingError::Case::unknownConditionKind, name);
    return *kind;
}

template <typename T>
std::optional<T> read(const std::map<std::string, JsonScalar>& condition, std::string_view key) {
    const auto found = condition.find(std::string(key));
    if (found == condition.end()) return std::nullopt;
    const auto* value = std::get_if<T>(&found->second.scalar);
    return value == nullptr ? std::nullopt : std::optional<T>(*value);
}

void requireAtMost(std::size_t limit, std::size_t found, const char* what) {
    if (found <= limit) return;
    throw ProtocolLimitError(ProtocolLimitError::Case::limitExceeded,
                             "load_script takes at most " + std::to_string(limit) + " " + what);
}

void requireShort(const std::string& text) {
    requireAtMost(ProtocolLimits::idSize, text.size(), "bytes for an id, a fix or a kind");
}

/// Before anything is made of it.
void requireWithinLimits(const LoadScriptRequest& script) {
    requireAtMost(ProtocolLimits::triggersAScript, script.triggers.size(), "triggers");
    for (const auto& trigger : script.triggers) {
        requireShort(trigger.id);
        requireShort(trigger.conditionKind);
        requireShort(trigger.actionKind);
        forEachConditionField([&](const auto& field) {
            using Value = typename std::decay_t<decltype(field)>::Value;
            if constexpr (std::is_same_v<Value, std::string>)
                requireShort(read<Value>(trigger.condition, field.key).value_or(Value()));
        });
    }
}

} // namespace

TriggerCondition toCondition(const std::string& kind, const std::map<std::string, JsonScalar>& condition) {
    TriggerCondition result{.kind = kindOf(kind)};
    forEachConditionField([&](const auto& field) {
        using Value = typename std::decay_t<decltype(field)>::Value;
        result.*field.member = read<Value>(condition, field.key);
    });
    return result;
}

TriggerEngine toEngine(LoadScriptRequest script, const FixResolver& fixResolver) {
    requireWithinLimits(script);
    std::vector<ArmedTrigger> armed;
    armed.reserve(script.triggers.size());
    for (auto& trigger : script.triggers) {
        auto condition = toCondition(trigger.conditionKind, trigger.condition);
        armed.push_back({std::move(trigger.id), std::string(), std::move(condition),
                         std::move(trigger.actionKind), std::move(trigger.action)});
    }
    std::size_t fixes = 0;
    const FixResolver counted = [&](const std::string& ident) {
        requireAtMost(ProtocolLimits::fixesAScript, ++fixes, "different fixes");
        return fixResolver(ident);
    };
    return TriggerEngine(std::move(armed), counted);
}

} // namespace tarnly::ScriptTriggerMapper
