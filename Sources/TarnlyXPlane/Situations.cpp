#include "TarnlyXPlane/Situations.hpp"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

/// The label with its terminator, then the mode.
constexpr auto head = "SIMO\0\1\0\0\0"sv;
constexpr std::size_t pathSize = 150;
constexpr std::size_t tailSize = 2;

/// Absent where its name cannot be told.
std::optional<FlightListing> listing(const fs::path& path) {
    auto absolute = fs::absolute(path).string();
    if (!isWellFormedUtf8(absolute)) return std::nullopt;
    return FlightListing{path.stem().string(), std::move(absolute), Date{modificationTime(path)}};
}

} // namespace

SituationList listSituations(const std::string& directory) {
    SituationList found;
    // The system would look at what stands before the NUL.
    if (directory.find('\0') != std::string::npos) return found;
    std::error_code unreachable;
    if (!fs::exists(directory, unreachable)) {
        if (unreachable) found.failure = unreachable.message();
        return found;
    }
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (entry.path().extension() != ".sit") continue;
        if (auto flight = listing(entry.path())) {
            found.flights.push_back(std::move(*flight));
        } else {
            ++found.leftOut;
        }
    }
    return found;
}

bool situationExists(const std::string& path) {
    if (path.find('\0') != std::string::npos) return false;
    std::error_code unreachable;
    return fs::exists(path, unreachable);
}

std::string relativeSituationPath(const std::string& path) {
    const auto end = path.find_last_not_of('/');
    const fs::path file(path.substr(0, end + 1));
    return "Output/situations/" + file.stem().string() + ".sit";
}

std::vector<std::byte> buildSimoLoadSituationPacket(std::string_view relativePath) {
    std::vector<std::byte> packet(head.size() + pathSize + tailSize);
    const auto toByte = [](char c) { return static_cast<std::byte>(c); };
    const auto path = std::ranges::transform(head, packet.begin(), toByte).out;
    std::ranges::transform(relativePath.substr(0, pathSize), path, toByte);
    return packet;
}

} // namespace tarnly
