#pragma once

#include <span>

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyCore/ScriptCheck/TriggerCheck.hpp"

namespace tarnly {

/// Looks at what the triggers of a script are to each other: tells of ids that stand there twice, of triggers
/// that wait for nobody, and of those that wait for each other in a circle.
void checkChains(std::span<const CheckedTrigger> triggers, ScriptFindings& findings);

} // namespace tarnly
