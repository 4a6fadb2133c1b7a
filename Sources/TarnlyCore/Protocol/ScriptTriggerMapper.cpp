#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"

#include <optional>
#include <variant>

namespace tarnly::ScriptTriggerMapper {
namespace {

TriggerConditionKind kindOf(const std::string& kind) {
    if (kind == "reaches_fix") return TriggerConditionKind::reachesFix;
    if (kind == "crosses_agl") return TriggerConditionKind::crossesAgl;
    if (kind == "crosses_altitude") return TriggerConditionKind::crossesAltitude;
    if (kind == "after_gear_down") return TriggerConditionKind::afterGearDown;
    if (kind == "after_start") return TriggerConditionKind::afterStart;
    if (kind == "after_trigger") return TriggerConditionKind::afterTrigger;
    throw MappingError(MappingError::Case::unknownConditionKind, kind);
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
