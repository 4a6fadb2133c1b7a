#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

struct sqlite3;
struct sqlite3_stmt;

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
/// identifiers in upper case, positions in degrees; views by these names do as well. Whatever stands in the
/// file, a `Lookup` ends in time. Optional: a host without one resolves nothing. Shared by the sessions; safe
/// from any thread.
class NavDatabase {
  public:
    /// So many lookups may be under way at once, further ones wait.
    static constexpr std::size_t sideBySide = 8;
    /// What a lookup may take in all.
    static constexpr Clock::Duration lookupLimit = std::chrono::seconds(2);

    /// What is worth a person's notice, each thing once, from any thread; may be null.
    using Warn = std::function<void(const std::string& text)>;

    class Lookup;

    /// Throws `NavDatabaseError::openFailed` when SQLite does not open `path`, which is a file's whatever it
    /// begins with. A file that exists is opened without looking into it: if it is no database, or lacks the
    /// tables, nothing will be found in it.
    explicit NavDatabase(const std::string& path, Warn warn = {});

    NavDatabase(const NavDatabase&) = delete;
    NavDatabase& operator=(const NavDatabase&) = delete;

  private:
    struct Close {
        void operator()(sqlite3* connection) const;
    };
    using Connection = std::unique_ptr<sqlite3, Close>;

    static Connection open(const std::string& path);
    Connection take() const;
    void giveBack(Connection connection) const;
    void noteLateness() const;

    const std::string path_;
    const Warn warn_;
    mutable std::atomic<bool> wasLate_ = false;
    // All are opened at the start: later the file may have another name, or the process no handle to spare.
    mutable Guarded<std::vector<Connection>> idle_;
    /// How many stand in `idle_`.
    mutable std::counting_semaphore<sideBySide> available_{sideBySide};
};

/// The search for some fixes, those of one script say, within `lookupLimit` from its making on. Blocks, also
/// for a disk; used by one thread.
class NavDatabase::Lookup {
  public:
    /// `isWanted` is asked every millisecond or so of a search; once it says no, nothing is found any more.
    /// `database` and `clock`, whose `now` must be safe from this thread, outlive the lookup.
    Lookup(const NavDatabase& database, const Clock& clock, std::function<bool()> isWanted);

    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;
    ~Lookup();

    /// Where `id`, in any letter case, is: the first such en-route fix, else the first such navaid, else
    /// absent. SQLite sees `id` up to its first NUL only.
    std::optional<Coordinate> resolve(const std::string& id);

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    /// Prepared when it is first asked; null while that fails, as the table is missing, say.
    struct Query {
        const char* sql;
        std::unique_ptr<sqlite3_stmt, Finalize> statement{};
    };

    std::optional<Coordinate> find(Query& query, const std::string& key);
    /// Called from within SQLite, hence throws nothing.
    bool mayGoOn() noexcept;

    const NavDatabase& database_;
    const Clock& clock_;
    const std::function<bool()> isWanted_;
    Connection connection_;
    const Clock::TimePoint deadline_;
    bool hasEnded_ = false;
    bool isLate_ = false;
    // depends-on: connection_
    Query fixes_;
    Query navaids_;
};

} // namespace tarnly
