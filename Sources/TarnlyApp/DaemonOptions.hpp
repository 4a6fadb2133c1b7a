#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "TarnlyPlatform/Http.hpp"

namespace tarnly {

/// What the command line of the companion asks for.
struct DaemonOptions {
    Endpoint simulator{"127.0.0.1", 8086};
    /// 0: a port that the system chooses.
    std::uint16_t port = 0;
    /// Absent: the computer's host name.
    std::optional<std::string> name;
    /// Absent: the application's folder in the person's data folder.
    std::optional<std::filesystem::path> dataFolder;
    std::optional<std::filesystem::path> navigationDatabase;
    std::optional<std::filesystem::path> situationsFolder;
    bool advertises = true;
};

/// A command line that ends the program at once: what to print, and the exit status.
struct EarlyExit {
    std::string text;
    int status = 0;
};

/// Help and version end with status 0; wrong usage ends with status 2 and one line.
std::variant<DaemonOptions, EarlyExit> parseDaemonOptions(int argc, const char* const* argv);

} // namespace tarnly
