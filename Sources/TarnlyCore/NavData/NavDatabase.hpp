#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyCore/NavData/NavConnection.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// Where the fixes and navaids of the world are, from an SQLite file that others produce; never written.
///
/// Read are the tables `enroute_fixes` (`fix_id`, `lat`, `lon`) and `navaids` (`nav_id`, `lat`, `lon`),
/// identifiers in upper case, positions in degrees; views by these names do as well. Whatever stands in the
/// file, and whatever its disk does, a `Lookup` ends in time: the file is opened and read by threads that are
/// left behind where it never answers. Optional: a host without one resolves nothing. Shared by the sessions;
/// safe from any thread.
class NavDatabase {
  public:
    /// So many lookups may be under way at once, further ones wait.
    static constexpr std::size_t sideBySide = 8;
    /// What a lookup may take in all.
    static constexpr Clock::Duration lookupLimit = std::chrono::seconds(2);
    static constexpr std::chrono::milliseconds openLimit{2000};

    /// Told what is worth a person's notice, each thing once, in whole sentences with the cure; by the
    /// threads that make and use the database. May be null.
    using Warn = std::function<void(const Phrase& text)>;

    class Lookup;

    /// Throws `NavDatabaseError::openFailed` when SQLite does not open `path`, which is a file's whatever it
    /// begins with. One that takes longer than `limit` is warned of, and nothing found in it until it is
    /// open. A file that exists is opened without looking into it: if it is no database, or lacks the tables,
    /// nothing will be found in it, of which the first lookup warns.
    explicit NavDatabase(const std::string& path, Warn warn = {},
                         std::chrono::milliseconds limit = openLimit);

    NavDatabase(const NavDatabase&) = delete;
    NavDatabase& operator=(const NavDatabase&) = delete;

    /// Of what it has warned, those whose cause has not been seen to be gone.
    std::vector<Phrase> warnings() const;

  private:
    class Room;
    const std::shared_ptr<Room> room_;
};

/// The search for some fixes, those of one script say, within `lookupLimit` from its making on. Used by one
/// thread, which it blocks.
class NavDatabase::Lookup {
  public:
    /// `isWanted` is asked every few milliseconds of a search; once it says no, nothing is found any more.
    /// `database` and `clock`, whose `now` must be safe from this thread, outlive the lookup.
    Lookup(const NavDatabase& database, const Clock& clock, std::function<bool()> isWanted);

    Lookup(const Lookup&) = delete;
    Lookup& operator=(const Lookup&) = delete;
    ~Lookup();

    /// Where `id`, in any letter case, is: the first such en-route fix, else the first such navaid, else
    /// absent. SQLite sees `id` up to its first NUL only. Throws as `startThread`.
    std::optional<Coordinate> resolve(const std::string& id);

  private:
    friend class NavDatabase::Room;
    struct Search;

    bool mayGoOn();

    const std::shared_ptr<Room> room_;
    const Clock& clock_;
    const std::function<bool()> isWanted_;
    const Clock::TimePoint deadline_;
    bool hasEnded_ = false;
    bool isLate_ = false;
    bool hasAnswer_ = false;
    /// Made with its thread when it is first asked.
    std::shared_ptr<Search> search_;
};

} // namespace tarnly
