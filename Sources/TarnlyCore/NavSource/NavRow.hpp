#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyCore/Flight/Values.hpp"

/// The lines of the simulator's navigation data, which are text for people as much as for programs: fields
/// parted by blanks, written by many hands. Plain functions, for any thread.
namespace tarnly {

/// A file of the simulator by what its rows are.
enum class NavFileKind { fixes, navaids, airports };

enum class NavKind { fix, vor, ndb, dme, airport };

/// A place that has an identifier.
struct NavEntry {
    NavKind kind = NavKind::fix;
    /// In upper case, as it is looked up. Not the only one of its name in the world.
    std::string ident{};
    /// "ENRT" for en-route, or the airport to whose approaches it belongs; empty for an airport.
    std::string area{};
    /// Two letters of a country or a part of it.
    std::string region{};
    /// For people; may be empty.
    std::string name{};
    Coordinate place{};

    bool isEnRoute() const { return area == "ENRT"; }
    bool operator==(const NavEntry&) const = default;
};

/// The line at a file's beginning that says what it is.
struct NavHeader {
    /// Of the format, 1200 for that of the simulator's version 12.
    int version = 0;
    /// Four digits, year and number of the issue, 2501; empty where it is not told, as is `build`.
    std::string cycle{};
    /// Eight digits, the day on which it was made.
    std::string build{};

    bool operator==(const NavHeader&) const = default;
};

/// Absent where `line` does not begin with a version.
std::optional<NavHeader> parseNavHeader(std::string_view line);

struct NavRow {
    enum class Kind {
        entry,
        /// Blank, a comment, or of a kind that nobody looks up: a localizer, a marker.
        nothing,
        /// The last one.
        end,
        unreadable
    };
    Kind kind = Kind::nothing;
    NavEntry entry{};
};

/// One line without its line feed.
NavRow parseNavRow(NavFileKind kind, std::string_view line);

} // namespace tarnly
