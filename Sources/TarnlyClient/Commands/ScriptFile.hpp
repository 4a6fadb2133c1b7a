#pragma once

#include <istream>
#include <string>
#include <string_view>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::client {

/// The triggers that `text` lists: an object with the key "triggers", or the list alone. `name` is what
/// complaints call it. Throws `UsageError` that says what is wrong, and where.
LoadScriptRequest parseScript(std::string_view text, const std::string& name);

/// The same of a file, or of `input` when the file is called "-".
LoadScriptRequest readScript(const std::string& file, std::istream& input);

} // namespace tarnly::client
