#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

/// Where the simulator is installed, as its installer notes it: a text file in the person's home folder with
/// a line for each place, stale ones among them. Blocking, also for as long as a disk hangs; safe from any
/// thread.
namespace tarnly {

/// The installer's note of this system, which need not exist. Throws `std::runtime_error` for a person
/// without a home folder.
std::filesystem::path simulatorInstallerNote();

/// The folders that the text of a note names, as they stand there but for blanks and strokes around them.
std::vector<std::filesystem::path> simulatorFoldersIn(std::string_view note);

/// The first folder of those in `note` that holds a simulator, by its navigation data, else the first that
/// exists; absent where there is none, or no note.
std::optional<std::filesystem::path> findSimulatorFolder(const std::filesystem::path& note);

/// The first one that is as it is wanted.
std::optional<std::filesystem::path> findSimulatorFolder(
    const std::filesystem::path& note, const std::function<bool(const std::filesystem::path&)>& isWanted);

/// Where the simulator in `simulatorFolder` saves situations.
std::filesystem::path situationsFolderOf(const std::filesystem::path& simulatorFolder);

} // namespace tarnly
