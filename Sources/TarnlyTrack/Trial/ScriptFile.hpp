#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Protocol/Messages.hpp"

/// A script that a person names on a command line. Callable from any thread.
namespace tarnly::track {

/// All of the script in the file, or of `input` when the file is called "-". Throws `UsageError` when it
/// cannot be read.
std::string readScript(const std::string& file, std::istream& input);

/// The triggers that `text` lists: an object with the key "triggers", or the list alone. Throws `UsageError`
/// that names `file` when companions would refuse it; why, `scriptWarnings` tells.
LoadScriptRequest parseScript(std::string_view text, const std::string& file);

/// What its author had better look at, a line each, for the terminal: a few, of however many there are.
std::vector<std::string> scriptWarnings(const std::string& text, const std::string& file);

} // namespace tarnly::track
