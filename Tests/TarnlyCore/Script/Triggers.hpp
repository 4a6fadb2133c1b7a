#pragma once

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TarnlyCore/Script/FiredTriggers.hpp"
#include "TarnlyCore/Script/Trigger.hpp"

/// Short ways to write down triggers and what has fired.
namespace tarnly::test {

inline constexpr double nan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

/// Knows no fix at all.
inline std::optional<Coordinate> noFix(const std::string&) { return std::nullopt; }

/// Of the time alone.
inline TriggerSample at(double elapsed) { return {.elapsed = elapsed}; }

inline ArmedTrigger armed(std::string id, TriggerCondition condition) {
    return {.id = std::move(id),
            .name = {},
            .condition = std::move(condition),
            .actionKind = "say",
            .action = {}};
}

inline TriggerCondition afterStart(double seconds) {
    return {.kind = TriggerConditionKind::afterStart, .seconds = seconds};
}

inline TriggerCondition afterGearDown(double seconds) {
    return {.kind = TriggerConditionKind::afterGearDown, .seconds = seconds};
}

inline TriggerCondition afterTrigger(std::string id, double seconds = 0) {
    return {.kind = TriggerConditionKind::afterTrigger, .seconds = seconds, .afterTriggerId = std::move(id)};
}

inline TriggerCondition crossing(TriggerConditionKind kind, double feet, bool climbing) {
    return {.kind = kind, .feet = feet, .climbing = climbing};
}

inline TriggerCondition reachesFix(std::string fix, double withinNm) {
    return {.kind = TriggerConditionKind::reachesFix, .fix = std::move(fix), .withinNm = withinNm};
}

inline std::vector<std::string> ids(const std::vector<FiredTrigger>& triggers) {
    std::vector<std::string> result;
    for (const auto& trigger : triggers)
        result.push_back(trigger.triggerId);
    return result;
}

inline std::vector<std::string> ids(const FiredTriggers& triggers) { return ids(triggers.described()); }

inline std::vector<std::string> ids(const std::vector<ArmedTrigger>& triggers) {
    std::vector<std::string> result;
    for (const auto& trigger : triggers)
        result.push_back(trigger.id);
    return result;
}

} // namespace tarnly::test
