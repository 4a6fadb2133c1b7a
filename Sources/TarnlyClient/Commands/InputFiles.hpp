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

/// All of the script in the file, or of `input` when the file is called "-". Throws `UsageError` when it
/// cannot be read.
std::string readScript(const std::string& file, std::istream& input);

/// The triggers that `text` lists: an object with the key "triggers", or the list alone. Throws `UsageError`
/// that names `file` when companions would refuse it; why, `checkScript` tells.
LoadScriptRequest parseScript(std::string_view text, const std::string& file);

} // namespace tarnly::client
