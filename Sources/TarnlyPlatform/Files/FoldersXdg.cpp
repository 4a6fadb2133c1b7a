#include "TarnlyPlatform/Files/Folders.hpp"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace tarnly {
namespace {

std::filesystem::path homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return home;
    const passwd* person = getpwuid(getuid());
    if (person != nullptr && person->pw_dir != nullptr && *person->pw_dir == '/') return person->pw_dir;
    throw std::runtime_error("there is no home folder: HOME is not set");
}

/// The folder that `variable` names, or `standard` in the home folder.
std::filesystem::path baseFolder(const char* variable, const std::filesystem::path& standard) {
    const char* configured = std::getenv(variable);
    // A relative path there is invalid and to be ignored, says XDG Base Directory.
    if (configured != nullptr && *configured == '/') return configured;
    return homeFolder() / standard;
}

} // namespace

std::filesystem::path applicationSupportFolder() {
    return baseFolder("XDG_DATA_HOME", ".local/share") / "Tarnly";
}

std::filesystem::path configurationFolder() { return baseFolder("XDG_CONFIG_HOME", ".config"); }

std::filesystem::path programPath() {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) throw std::runtime_error("the program's path is unknown: " + error.message());
    constexpr std::string_view mark = " (deleted)";
    const auto& text = path.native();
    // The system marks the name of a file that was removed or replaced; a file may also be called that.
    if (!text.ends_with(mark) || std::filesystem::exists(path, error)) return path;
    return text.substr(0, text.size() - mark.size());
}

std::string hostName() {
    std::array<char, 256> name{};
    if (gethostname(name.data(), name.size() - 1) != 0 || name.front() == '\0') return "localhost";
    return name.data();
}

} // namespace tarnly
