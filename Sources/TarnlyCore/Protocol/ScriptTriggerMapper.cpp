#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"

#include <optional>
#include <variant>

namespace tarnly::ScriptTriggerMapper {
namespace {

/// What a client calls the kind.
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

TriggerConditionKind kindOf(const std::string& name) {
    const auto kind = TriggerConditionKind::find([&](auto which) { return wireName(which) == name; });
    if (!kind) throw MappingError(MappingError::Case::unknownConditionKind, name);
    return *kind;
}

template <typename T>
std::optional<T> read(const std::map<std::string, JsonScalar>& condition, const std::string& key) {
    const auto found = condition.find(key);
    if (found == condition.end()) return std::nullopt;
    const auto* value = std::get_if<T>(&found->second.scalar);
    return value == nullptr ? std::nullopt : std::optional<T>(*value);
}

} // namespace

TriggerCondition toCondition(const std::string& kind, const std::map<std::string, JsonScalar>& condition) {
    return {.kind = kindOf(kind),
            .fix = read<std::string>(condition, "fix"),
            .withinNm = read<double>(condition, "within_nm"),
            .feet = read<double>(condition, "feet"),
            .climbing = read<bool>(condition, "climbing"),
            .seconds = read<double>(condition, "seconds"),
            .afterTriggerId = read<std::string>(condition, "after_trigger_id")};
}

} // namespace tarnly::ScriptTriggerMapper
