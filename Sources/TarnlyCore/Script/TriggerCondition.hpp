#pragma once

#include <optional>
#include <string>

#include "TarnlyCore/Script/TriggerConditionKind.hpp"

namespace tarnly {

/// When a trigger fires. A condition that lacks a field of its kind never holds; fields of other kinds are
/// ignored. All have initializers: what a designated initializer leaves out is absent, without a warning.
struct TriggerCondition {
    TriggerConditionKind kind{};
    /// `reachesFix`: the identifier, in any letter case.
    std::optional<std::string> fix{};
    /// `reachesFix`: the radius in nautical miles.
    std::optional<double> withinNm{};
    /// `crossesAgl`, `crossesAltitude`: the threshold.
    std::optional<double> feet{};
    /// `crossesAgl`, `crossesAltitude`: upward or downward.
    std::optional<bool> climbing{};
    /// `afterGearDown`, `afterStart`, `afterTrigger`: the delay.
    std::optional<double> seconds{};
    /// `afterTrigger`: whose firing starts the delay.
    std::optional<std::string> afterTriggerId{};

    bool operator==(const TriggerCondition&) const = default;
    static constexpr auto fields() {
        return std::tuple(
            field("kind", &TriggerCondition::kind), field("fix", &TriggerCondition::fix),
            field("withinNm", &TriggerCondition::withinNm), field("feet", &TriggerCondition::feet),
            field("climbing", &TriggerCondition::climbing), field("seconds", &TriggerCondition::seconds),
            field("afterTriggerId", &TriggerCondition::afterTriggerId));
    }
};

} // namespace tarnly
