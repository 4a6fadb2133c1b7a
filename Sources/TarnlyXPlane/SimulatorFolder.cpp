#include "TarnlyXPlane/SimulatorFolder.hpp"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "TarnlyPlatform/Files/Folders.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

/// More than any installer notes.
constexpr std::size_t longestNote = 64 * 1024;

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = line.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

std::string startOf(const fs::path& file) {
    std::string text(longestNote, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

bool isFolder(const fs::path& path) {
    std::error_code isNone;
    return fs::is_directory(path, isNone);
}

} // namespace

fs::path simulatorInstallerNote() { return homeFolder() / ".x-plane" / "x-plane_install_12.txt"; }

std::vector<fs::path> simulatorFoldersIn(std::string_view note) {
    std::vector<fs::path> folders;
    while (!note.empty()) {
        const auto end = note.find('\n');
        auto line = trimmed(note.substr(0, end));
        note.remove_prefix(end == std::string_view::npos ? note.size() : end + 1);
        while (line.size() > 1 && line.ends_with('/'))
            line.remove_suffix(1);
        // What is not absolute is relative to nobody knows what.
        if (line.starts_with('/')) folders.emplace_back(line);
    }
    return folders;
}

std::optional<fs::path> findSimulatorFolder(const fs::path& note) {
    const auto isWhole = [](const fs::path& folder) {
        std::error_code isNone;
        return fs::is_regular_file(folder / "Resources/default data/earth_nav.dat", isNone);
    };
    auto whole = findSimulatorFolder(note, isWhole);
    return whole ? whole : findSimulatorFolder(note, isFolder);
}

std::optional<fs::path> findSimulatorFolder(const fs::path& note,
                                            const std::function<bool(const fs::path&)>& isWanted) {
    const auto folders = simulatorFoldersIn(startOf(note));
    const auto found = std::ranges::find_if(folders, isWanted);
    return found == folders.end() ? std::nullopt : std::optional(*found);
}

fs::path situationsFolderOf(const fs::path& simulatorFolder) {
    return simulatorFolder / "Output" / "situations";
}

} // namespace tarnly
