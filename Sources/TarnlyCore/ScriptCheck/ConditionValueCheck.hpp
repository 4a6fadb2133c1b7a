#pragma once

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyCore/ScriptCheck/TriggerCheck.hpp"

namespace tarnly {

/// Tells of a condition that has all it needs, with values that can hardly be meant: a radius that nobody
/// flies into, a height below the ground.
void checkConditionValues(const CheckedTrigger& trigger, ScriptFindings& findings);

} // namespace tarnly
