#pragma once

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyCore/ScriptCheck/TriggerCheck.hpp"

namespace tarnly {

/// Tells of a condition that has all it needs, with values by which it never holds, or that can hardly be
/// meant: a height below the ground, a radius that nobody flies into.
void checkConditionValues(const CheckedTrigger& trigger, ScriptFindings& findings);

} // namespace tarnly
