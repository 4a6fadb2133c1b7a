#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TarnlyPlatform/Login/LoginItem.hpp"
#include "TarnlyPlatform/Net/Admission.hpp"
#include "TarnlyPlatform/Net/WebOrigin.hpp"

namespace tarnly {

/// What the command line of the companion asks for, for this run; the settings hold where it says nothing.
struct CompanionOptions {
    std::optional<std::string> simulatorHost;
    std::optional<std::uint16_t> simulatorPort;
    /// 0: a port that the system chooses.
    std::optional<std::uint16_t> port;
    std::optional<std::string> name;
    /// Absent: the application's folder in the person's data folder.
    std::optional<std::filesystem::path> dataFolder;
    std::optional<std::filesystem::path> navigationDatabase;
    std::optional<std::filesystem::path> situationsFolder;
    /// Where other programs read how the companion stands.
    std::optional<std::filesystem::path> statusFile;
    std::optional<bool> advertises;
    /// Connections, those of strangers included.
    std::size_t mostClients = AdmissionLimits().peers;
    /// Of web pages that may use the companion.
    std::vector<WebOrigin> allowedOrigins;
    /// Browsers get the lesson page; a short one that says what this is otherwise.
    bool hasLessonPage = true;
    /// Of the desktop application only: start without opening a window.
    bool startsInBackground = false;
    /// Only ask the companion that runs how it stands.
    bool asksForStatus = false;

    bool operator==(const CompanionOptions&) const = default;
};

/// Where clients and firewalls expect the companion. None that the system hands out by itself.
struct UsualPorts {
    static constexpr std::uint16_t first = 28086;
    static constexpr std::uint16_t last = 28095;
};

/// The ports to listen on, the first of them that is free: the usual ones, then any, or only `wanted`.
std::vector<std::uint16_t> portsToTry(std::optional<std::uint16_t> wanted);

/// A command line that ends the program at once: what to print, and the exit status.
struct EarlyExit {
    std::string text;
    int status = 0;
};

/// The two programs that are a companion; they take the same options but for `--background`.
enum class CompanionProgram { tarnly, tarnlyd };

/// Help and version end with status 0; wrong usage ends with status 2 and one line.
std::variant<CompanionOptions, EarlyExit> parseOptions(CompanionProgram program, int argc,
                                                       const char* const* argv);

/// As `parseOptions`; and where the paths that the options name cannot be what they are to be, that is wrong
/// usage (`problemOfPaths`). Where the command line asks only how a companion stands, that has been asked:
/// its answer with status 0, or status 1 and one line with what to do. Blocks for five seconds at most.
std::variant<CompanionOptions, EarlyExit> prepareRun(CompanionProgram program, int argc,
                                                     const char* const* argv);

/// The folder of the settings and the recordings. Throws `std::runtime_error` for a person without a home
/// folder who names none.
std::filesystem::path dataFolder(const CompanionOptions& options);

/// The login item that starts the running program, without a window and with the settings of `options`' data
/// folder, when the person logs in. Each data folder has its own, as it has its own setting. Throws
/// `std::runtime_error` for a person without a home folder.
std::unique_ptr<LoginItem> makeLoginItem(const CompanionOptions& options);

} // namespace tarnly
