#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

#include "TarnlyCore/NavSource/NavSources.hpp"

namespace tarnly {

/// What has become of a build.
struct NavBuildReport {
    /// Places by what they are.
    std::size_t fixes = 0;
    std::size_t navaids = 0;
    std::size_t airports = 0;
    /// Of rows that could not be read: a sentence for each file that has some.
    std::vector<std::string> remarks{};
};

/// There is no place for the database.
class NavTargetError : public std::system_error {
  public:
    NavTargetError(std::error_code why, const std::filesystem::path& target);

    /// What `what` says, as a sentence.
    const Phrase& told() const noexcept { return told_; }

  private:
    Phrase told_;
};

/// How far it is, of 100; called now and then.
using NavBuildProgress = std::function<void(int percent)>;

/// Makes the navigation database `target` of a simulator's files: the tables that `NavDatabase` reads, with
/// columns and tables of their own for `NavCatalogue` and `NavAbout`. The file takes the place of what is
/// there when it is whole and on the disk; everybody may read it.
///
/// Blocks for seconds; callable from any thread. Asks `isWanted` several times a second. Throws
/// `NavSourceError`, `NavTargetError`, `SqliteError` and `std::system_error`, and leaves nothing behind then.
NavBuildReport buildNavDatabase(const NavSources& sources, const std::filesystem::path& target,
                                const NavBuildProgress& progress, const std::function<bool()>& isWanted);

} // namespace tarnly
