#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

struct sqlite3;

namespace tarnly {

/// A navigation database that cannot be used.
struct NavDatabaseErrorCases {
    enum class Case {
        /// `path` as it was given, `message` as SQLite gave it.
        openFailed
    };
    static constexpr std::array<std::string_view, 1> names{"openFailed"};
};
using NavDatabaseError = Error<NavDatabaseErrorCases>;

/// Where the fixes and navaids of the world are, from an SQLite file that others produce; never written.
///
/// Read are the tables `enroute_fixes` (`fix_id`, `lat`, `lon`) and `navaids` (`nav_id`, `lat`, `lon`),
/// identifiers in upper case, positions in degrees. Optional: a host without one resolves nothing. Shared by
/// the sessions; safe from any thread, though a query may wait for the disk. `sideBySide` threads may ask at
/// once, further ones wait.
class NavDatabase {
  public:
    static constexpr std::size_t sideBySide = 8;

    /// Throws `NavDatabaseError::openFailed` when SQLite does not open `path`. A file that exists is opened
    /// without looking into it: if it is no database, or lacks the tables, nothing will be found in it.
    explicit NavDatabase(const std::string& path);

    NavDatabase(const NavDatabase&) = delete;
    NavDatabase& operator=(const NavDatabase&) = delete;

    /// Where `id`, in any letter case, is: the first such en-route fix, else the first such navaid, else
    /// absent. SQLite sees `id` up to its first NUL only.
    std::optional<Coordinate> resolve(const std::string& id) const;

  private:
    struct Close {
        void operator()(sqlite3* connection) const;
    };
    using Connection = std::unique_ptr<sqlite3, Close>;
    class Loan;

    static Connection open(const std::string& path);

    // All are opened at the start: later the file may have another name, or the process no handle to spare.
    mutable Guarded<std::vector<Connection>> idle_;
    /// How many stand in `idle_`.
    mutable std::counting_semaphore<sideBySide> available_{sideBySide};
};

} // namespace tarnly
