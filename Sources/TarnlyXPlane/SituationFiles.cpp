#include "TarnlyXPlane/SituationFiles.hpp"

#include <filesystem>
#include <system_error>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

FlightListing listing(const fs::path& path) {
    return {wellFormedUtf8(path.stem().string()), wellFormedUtf8(fs::absolute(path).string()),
            Date{modificationTime(path)}};
}

} // namespace

std::vector<FlightListing> listSituations(const std::string& directory) {
    std::vector<FlightListing> found;
    if (!situationExists(directory)) return found;
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (entry.path().extension() == ".sit") found.push_back(listing(entry.path()));
    }
    return found;
}

bool situationExists(const std::string& path) {
    // The system would look at what stands before the NUL.
    if (path.find('\0') != std::string::npos) return false;
    std::error_code unreachable;
    return fs::exists(path, unreachable);
}

std::string relativeSituationPath(const std::string& path) {
    const auto end = path.find_last_not_of('/');
    const fs::path file(path.substr(0, end + 1));
    return "Output/situations/" + file.stem().string() + ".sit";
}

} // namespace tarnly
