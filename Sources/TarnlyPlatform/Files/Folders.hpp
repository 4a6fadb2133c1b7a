#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tarnly {

/// The application's own folder for settings and recordings: "Tarnly" where the desktop has such folders;
/// with XDG Base Directory, in `$XDG_DATA_HOME` where that is an absolute path, else in `~/.local/share`.
/// Need not exist. Throws `std::runtime_error` for a person without a home folder.
std::filesystem::path applicationDataFolder();

/// The folder for configuration files of all applications; with XDG, `$XDG_CONFIG_HOME` where that is an
/// absolute path, else `~/.config`. Need not exist. Throws `std::runtime_error` for a person without a home
/// folder.
std::filesystem::path configurationFolder();

/// The person's own folder. Throws `std::runtime_error` for a person without one.
std::filesystem::path homeFolder();

/// The absolute path of the running program's file. Still that path after an update has replaced the file.
/// Throws `std::runtime_error` where the system does not tell it.
std::filesystem::path programPath();

/// A page of the documentation, "troubleshooting.md" say, that was installed with the running program; absent
/// where it was not. Looks at the disk of the program.
std::optional<std::filesystem::path> installedDocument(const std::string& name);

} // namespace tarnly
