#include "TarnlyApp/OptionPaths.hpp"

#include <exception>
#include <filesystem>
#include <system_error>

#include "TarnlyCore/NavData/NavDatabaseProblem.hpp"
#include "TarnlyPlatform/Base/Aside.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

using Problem = std::optional<std::string>;

Problem problemOfSituations(const std::filesystem::path& folder) {
    constexpr const char* wanted = "name the folder in which the simulator saves its situations";
    std::error_code error;
    const auto status = std::filesystem::status(folder, error);
    const auto shown = printable(folder.string());
    if (status.type() == std::filesystem::file_type::not_found) return shown + " does not exist; " + wanted;
    const bool isKnown = std::filesystem::status_known(status);
    if (isKnown && !std::filesystem::is_directory(status)) return shown + " is no folder; " + wanted;
    return std::nullopt;
}

Problem look(const CompanionOptions& options) {
    if (options.navigationDatabase) {
        auto problem = problemOfNavDatabase(options.navigationDatabase->string());
        if (problem) return "--nav-db: " + *problem;
    }
    if (options.situationsFolder) {
        auto problem = problemOfSituations(*options.situationsFolder);
        if (problem) return "--situations: " + *problem;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> problemOfPaths(const CompanionOptions& options,
                                          std::chrono::milliseconds patience) {
    if (!options.navigationDatabase && !options.situationsFolder) return std::nullopt;
    try {
        const auto found = aside(patience, [options] { return look(options); });
        return found.value_or(std::nullopt);
    } catch (const std::exception&) {
        return std::nullopt; // the start itself tells what it lacks
    }
}

} // namespace tarnly
