#pragma once

#include <string_view>
#include <vector>

#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"

namespace tarnly {

/// What is wrong with the script in `text`, a list of triggers or an object that has it: what companions
/// would refuse, what can never fire, and what was hardly meant so; in the order of the text. Nothing is
/// found as an error in a script that companions take and each of whose triggers can fire.
///
/// `fixPosition` is asked as by the trigger engine, once for each fix, and every one that it does not know is
/// told; without it nobody asks. Callable from any thread.
std::vector<ScriptFinding> checkScript(std::string_view text, const FixResolver& fixPosition = {});

} // namespace tarnly
