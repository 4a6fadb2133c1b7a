#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyCore/NavData/SqliteFile.hpp"

namespace tarnly {

/// An entry of a navigation database, for people.
struct NavListing {
    std::string ident;
    /// "fix", "VOR", "NDB", "DME", "airport"; where the database does not tell, "fix" or "navaid".
    std::string kind;
    /// These three are empty where the database does not tell.
    std::string name{};
    std::string area{};
    std::string region{};
    Coordinate place{};

    bool operator==(const NavListing&) const = default;
};

/// A navigation database as something to look into: all that it has of a name. Belongs to one thread, which
/// it blocks. Throws `SqliteError`.
class NavCatalogue {
  public:
    /// The file at `path` is one (`problemOfNavDatabase`).
    explicit NavCatalogue(const std::string& path);

    /// All entries of that identifier, in any letter case, the one that a script gets first.
    std::vector<NavListing> find(const std::string& ident) const;

    /// Identifiers that differ from it in one letter: another one, one more, one less, or two that have
    /// changed places. In the order of the alphabet, `most` at most.
    std::vector<std::string> near(const std::string& ident, std::size_t most) const;

  private:
    const SqliteFile file_;
};

} // namespace tarnly
