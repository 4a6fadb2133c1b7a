#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Files/FolderLock.hpp"

namespace tarnly {

/// A companion's claim to its data folder, which two would fill with each other's settings and status: held
/// from before the settings are read until the program ends. Belongs to `main`.
class DataFolderClaim {
  public:
    /// Blocks for `patience` at most, for one that is just ending. Throws `std::runtime_error`, which names
    /// the process and the cure, when another companion has the folder.
    explicit DataFolderClaim(const std::filesystem::path& folder,
                             std::chrono::milliseconds patience = std::chrono::seconds(2));

    /// Why nobody can claim the folder, and the cure: whole sentences. The companion runs nevertheless.
    const std::optional<Phrase>& problem() const { return problem_; }

  private:
    std::optional<FolderLock> lock_;
    std::optional<Phrase> problem_;
};

} // namespace tarnly
