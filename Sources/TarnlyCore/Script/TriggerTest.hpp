#pragma once

#include <cstdint>

#include "TarnlyCore/Flight/Coordinate.hpp"
#include "TarnlyCore/Script/TriggerConditionKind.hpp"

namespace tarnly {

/// A trigger's place in its script, from 0.
using TriggerIndex = std::uint32_t;

/// A trigger id as a number, from 0, within its script.
using TriggerIdNumber = std::uint32_t;

/// A trigger's condition in numbers only: what a sample is tested against.
///
/// A number that the condition lacks is NaN: then every comparison with it is false, as a condition that
/// lacks something never holds.
struct TriggerTest {
    TriggerConditionKind::Case kind;
    bool climbing;
    TriggerIdNumber id;
    /// `afterTrigger`: whose firing starts the delay.
    TriggerIdNumber source;
    /// The condition's nautical miles, feet or seconds.
    double limit;
    Coordinate fix;
};

} // namespace tarnly
