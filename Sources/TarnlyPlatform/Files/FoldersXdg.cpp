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
    throw std::runtime_error("there is no home folder: HOME is not set");
}

std::filesystem::path applicationDataFolder() {
    return baseFolder("XDG_DATA_HOME", ".local/share") / "Tarnly";
}

std::filesystem::path configurationFolder() { return baseFolder("XDG_CONFIG_HOME", ".config"); }

} // namespace tarnly
