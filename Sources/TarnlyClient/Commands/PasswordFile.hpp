#pragma once

#include <filesystem>
#include <string>

namespace tarnly::client {

/// The first line of the file, UTF-8. Throws `UsageError` when the file cannot be read or its first line is
/// empty or no UTF-8.
std::string readPassword(const std::filesystem::path& file);

} // namespace tarnly::client
