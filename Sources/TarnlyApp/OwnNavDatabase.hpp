#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// A navigation database as far as the companion knows it.
struct NavDatabaseFile {
    /// Absent where there is none.
    std::optional<std::filesystem::path> path{};
    /// Of its data; empty where it does not tell.
    std::string cycle{};
    /// What is not as it should be, in whole sentences with the cure.
    std::vector<Phrase> warnings{};
    /// What is worth a line on standard error.
    std::vector<std::string> remarks{};
};

/// Sees to it that `file` has the navigation data of the simulator that the installer's `note` names: makes
/// it where it is not there, or of other data, which takes seconds. Where that fails, what was made before is
/// used. Without a simulator there is what was made before, or none.
///
/// Blocking; safe from any thread, one call at a time for a file. `onMaking` is called where it has to be
/// made. Throws `NavSourceError::cancelled` once `isWanted` says no, and `std::bad_alloc`.
NavDatabaseFile refreshOwnNavDatabase(const std::filesystem::path& note, const std::filesystem::path& file,
                                      const std::function<bool()>& isWanted,
                                      const std::function<void()>& onMaking);

/// The database that a person names, which is theirs to keep.
NavDatabaseFile lookAtNavDatabase(const std::filesystem::path& file);

} // namespace tarnly
