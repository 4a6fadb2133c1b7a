#pragma once

#include <filesystem>
#include <istream>
#include <string>
#include <string_view>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::client {

// The files that a person names on the command line.

/// The first line of the file, UTF-8. Throws `UsageError` when the file cannot be read or its first line is
/// empty or no UTF-8.
std::string readPassword(const std::filesystem::path& file);

/// The triggers that `text` lists: an object with the key "triggers", or the list alone. `name` is what
/// complaints call it. Throws `UsageError` that says what is wrong, and where.
LoadScriptRequest parseScript(std::string_view text, const std::string& name);

/// The same of a file, or of `input` when the file is called "-".
LoadScriptRequest readScript(const std::string& file, std::istream& input);

} // namespace tarnly::client
