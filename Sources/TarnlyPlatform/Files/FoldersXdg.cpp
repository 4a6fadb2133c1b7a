#include "TarnlyPlatform/Files/Folders.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace tarnly {
namespace {

/// The folder that `variable` names, or `standard` in the home folder.
std::filesystem::path baseFolder(const char* variable, const std::filesystem::path& standard) {
    const char* configured = std::getenv(variable);
    // A relative path there is invalid and to be ignored, says XDG Base Directory.
    if (configured != nullptr && *configured == '/') return configured;
    return homeFolder() / standard;
}

} // namespace

std::filesystem::path homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return home;
    const passwd* person = getpwuid(getuid());
    if (person != nullptr && person->pw_dir != nullptr && *person->pw_dir == '/') return person->pw_dir;
    throw std::runtime_error("there is no home folder; set HOME to the path of yours");
}

std::filesystem::path applicationDataFolder() {
    return baseFolder("XDG_DATA_HOME", ".local/share") / "Tarnly";
}

std::filesystem::path configurationFolder() { return baseFolder("XDG_CONFIG_HOME", ".config"); }

std::optional<std::filesystem::path> installedDocument(const std::string& name) {
    try {
        auto document = programPath().parent_path().parent_path() / "share/doc/tarnly" / name;
        if (std::filesystem::is_regular_file(document)) return document;
    } catch (const std::runtime_error&) {
        // The system tells no path, or lets nobody look.
    }
    return std::nullopt;
}

} // namespace tarnly
