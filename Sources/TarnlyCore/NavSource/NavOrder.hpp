#pragma once

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

#include "TarnlyCore/NavSource/NavRow.hpp"

namespace tarnly {

/// All entries of a simulator's navigation data, in the order in which those of one name count.
///
/// They come file by file, those that override others first: an entry of theirs takes the place of those of
/// the same kind, name, region and area in the files that come later. Belongs to one thread.
class NavOrder {
  public:
    struct Ranked {
        NavEntry entry;
        bool isUsers = false;
        /// The place in the files.
        std::size_t number = 0;
    };

    void add(NavEntry entry, bool isUsers);
    /// What has come so far overrides what comes from now on; for the files that do.
    void overrideLater();

    /// By name; of one name en-route fixes first, then VORs, NDBs en route and DMEs, NDBs of airports,
    /// airports, and fixes of approaches and the like. Among equals the person's own first, then by region
    /// and area, in the order of the alphabet, then as in the files. Leaves nothing behind.
    std::vector<Ranked> take();

    std::size_t size() const { return entries_.size(); }

  private:
    std::vector<Ranked> entries_;
    std::unordered_set<std::string> overridden_;
    /// Of the entries, from which on their keys are not among the overridden.
    std::size_t firstNotOver_ = 0;
};

} // namespace tarnly
