#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TarnlyCore/NavData/NavAbout.hpp"
#include "TarnlyCore/NavSource/NavRow.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

/// Which files of the simulator's folder its navigation data are in. Blocking, for as long as a disk does;
/// safe from any thread.
namespace tarnly {

struct NavSourceErrorCases {
    enum class Case {
        /// The folder has no navigation data.
        noData,
        /// What is the matter with a file.
        unusable,
        /// Nobody wants it any more.
        cancelled
    };
    static constexpr std::array<std::string_view, 3> names{"noData", "unusable", "cancelled"};
};

class NavSourceError : public Error<NavSourceErrorCases> {
  public:
    explicit NavSourceError(Case which) : Error(which) {}
    NavSourceError(Case which, Phrase told) : Error(which, told.text()), told_(std::move(told)) {}

    /// The payload: whole sentences, with the file's name and what to do.
    const Phrase& told() const noexcept { return told_; }

  private:
    Phrase told_;
};

struct NavSource {
    /// Each overrides what stands before it.
    enum class Layer { base, placedByHand, users };

    NavFileKind kind = NavFileKind::fixes;
    std::filesystem::path path{};
    /// What it is now, by its name below the simulator's folder.
    NavSourceStamp stamp{};
    Layer layer = Layer::base;
};

struct NavSources {
    std::filesystem::path folder;
    /// The ones that count, each after those that it overrides.
    std::vector<NavSource> files{};
    /// Of what is in force; empty where nobody says.
    std::string cycle{};
    std::string build{};
    /// What a person should know of the choice, in whole sentences with what to do.
    std::vector<Phrase> warnings{};

    /// What a database made of them says of itself.
    NavAbout about() const;
};

/// The files below a simulator's folder:
/// - fixes and navaids from `Custom Data` where it has both, else from `Resources/default data`; a file
///   without a byte counts as none
/// - airports from there as well, or where there are none, from `Resources/default data`
/// - over them what was placed by hand (`Global Airports`), and over all the person's own, `user_fix.dat` and
///   `user_nav.dat`
///
/// Throws `NavSourceError` where there are none, or the format of those for fixes and navaids is too old.
NavSources findNavSources(const std::filesystem::path& simulatorFolder);

/// Whether the folder has a simulator's navigation data, by the one file that is always there.
bool hasNavData(const std::filesystem::path& simulatorFolder);

} // namespace tarnly
