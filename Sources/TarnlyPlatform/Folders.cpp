#include "TarnlyPlatform/Folders.hpp"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace tarnly {
namespace {

std::filesystem::path homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return home;
    const passwd* person = getpwuid(getuid());
    if (person != nullptr && person->pw_dir != nullptr && *person->pw_dir == '/') return person->pw_dir;
    throw std::runtime_error("there is no home folder: HOME is not set");
}

std::filesystem::path dataFolder() {
    const char* configured = std::getenv("XDG_DATA_HOME");
    // A relative path there is invalid and to be ignored, says XDG Base Directory.
    if (configured != nullptr && *configured == '/') return configured;
    return homeFolder() / ".local" / "share";
}

} // namespace

std::filesystem::path applicationSupportFolder() { return dataFolder() / "Tarnly"; }

std::string hostName() {
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0 || name.front() == '\0') return "localhost";
    return name.data();
}

} // namespace tarnly
