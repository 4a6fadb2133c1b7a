#pragma once

#include <filesystem>
#include <string>

namespace tarnly {

/// The application's own folder for settings and recordings: "Tarnly" in `$XDG_DATA_HOME` where that is an
/// absolute path, else in `~/.local/share` (XDG Base Directory). Need not exist. Throws `std::runtime_error`
/// for a person without a home folder.
std::filesystem::path applicationSupportFolder();

/// The computer's host name; "localhost" where the system has none.
std::string hostName();

} // namespace tarnly
