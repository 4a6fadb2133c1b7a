#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <sqlite3.h>

#include <filesystem>
#include <thread>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr const char* fixQuery = "SELECT lat, lon FROM enroute_fixes WHERE fix_id = ?1";
constexpr const char* navaidQuery = "SELECT lat, lon FROM navaids WHERE nav_id = ?1";

constexpr int toItsNul = -1;

/// Steps of SQLite's machine between two looks at the time: less than a millisecond.
constexpr int stepsBetweenLooks = 1000;
/// How long to leave a file alone that somebody writes.
constexpr auto writersTurn = std::chrono::milliseconds(10);

// A row has a few dozen bytes. What takes more is no such row, and a single step over it may take as long as
// it likes.
constexpr int longestValue = 100'000;
constexpr sqlite3_int64 mostMemory = 32 * 1024 * 1024;

/// Nothing in the file is to be trusted, and no file is to be something else by its name: SQLite may be built
/// to read a path that begins with "file:" as a URI, and knows ":memory:".
void distrust(sqlite3* connection) {
    sqlite3_hard_heap_limit64(mostMemory);
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
}

std::string asPlainPath(const std::string& path) {
    return std::filesystem::path(path).is_absolute() ? path : "./" + path;
}

} // namespace

void NavDatabase::Close::operator()(sqlite3* connection) const { sqlite3_close(connection); }

NavDatabase::NavDatabase(const std::string& path, Warn warn) : path_(path), warn_(std::move(warn)) {
    idle_.with([&](auto& idle) {
        for (std::size_t number = 0; number < sideBySide; ++number)
            idle.push_back(open(path));
    });
}

NavDatabase::Connection NavDatabase::open(const std::string& path) {
    sqlite3* opened = nullptr;
    // Without a lock of its own: each is used by one thread at a time.
    const int result = sqlite3_open_v2(asPlainPath(path).c_str(), &opened,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    Connection connection(opened);
    if (result == SQLITE_OK) {
        distrust(opened);
        return connection;
    }
    const char* message = opened ? sqlite3_errmsg(opened) : "unknown error";
    throw NavDatabaseError(NavDatabaseError::Case::openFailed, {{"path", path}, {"message", message}});
}

NavDatabase::Connection NavDatabase::take() const {
    available_.acquire();
    return idle_.with([](auto& idle) {
        auto last = std::move(idle.back());
        idle.pop_back();
        return last;
    });
}

void NavDatabase::giveBack(Connection connection) const {
    idle_.with([&](auto& idle) { idle.push_back(std::move(connection)); });
    available_.release();
}

void NavDatabase::noteLateness() const {
    if (wasLate_.exchange(true) || !warn_) return;
    warn_("The navigation database " + printable(path_) +
          " took more than 2 seconds for the fixes of a script, of which the rest counts as not found; give "
          "--nav-db one with plain tables and indexes.");
}

void NavDatabase::Lookup::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

NavDatabase::Lookup::Lookup(const NavDatabase& database, const Clock& clock, std::function<bool()> isWanted)
    : database_(database),
      clock_(clock),
      isWanted_(std::move(isWanted)),
      connection_(database.take()),
      deadline_(clock.now() + lookupLimit),
      fixes_{fixQuery},
      navaids_{navaidQuery} {
    const auto connection = connection_.get();
    sqlite3_progress_handler(
        connection, stepsBetweenLooks,
        [](void* lookup) { return static_cast<Lookup*>(lookup)->mayGoOn() ? 0 : 1; }, this);
    sqlite3_busy_handler(
        connection,
        [](void* lookup, int) {
            std::this_thread::sleep_for(writersTurn);
            return static_cast<Lookup*>(lookup)->mayGoOn() ? 1 : 0;
        },
        this);
    // While a statement is prepared there are no steps: views upon views may make that long, too.
    sqlite3_set_authorizer(
        connection,
        [](void* lookup, int, const char*, const char*, const char*, const char*) {
            return static_cast<Lookup*>(lookup)->mayGoOn() ? SQLITE_OK : SQLITE_DENY;
        },
        this);
}

NavDatabase::Lookup::~Lookup() {
    fixes_.statement.reset();
    navaids_.statement.reset();
    const auto connection = connection_.get();
    sqlite3_progress_handler(connection, 0, nullptr, nullptr);
    sqlite3_busy_handler(connection, nullptr, nullptr);
    sqlite3_set_authorizer(connection, nullptr, nullptr);
    database_.giveBack(std::move(connection_));
}

std::optional<Coordinate> NavDatabase::Lookup::resolve(const std::string& id) {
    std::optional<Coordinate> found;
    if (mayGoOn()) {
        const auto key = upperCased(id);
        found = find(fixes_, key);
        if (!found) found = find(navaids_, key);
    }
    if (isLate_) database_.noteLateness();
    return found;
}

std::optional<Coordinate> NavDatabase::Lookup::find(Query& query, const std::string& key) {
    if (!query.statement) {
        sqlite3_stmt* prepared = nullptr;
        sqlite3_prepare_v2(connection_.get(), query.sql, toItsNul, &prepared, nullptr);
        query.statement.reset(prepared);
        if (prepared == nullptr) return std::nullopt;
    }
    const auto statement = query.statement.get();
    std::optional<Coordinate> found;
    sqlite3_bind_text(statement, 1, key.c_str(), toItsNul, SQLITE_TRANSIENT);
    if (sqlite3_step(statement) == SQLITE_ROW)
        found = Coordinate{sqlite3_column_double(statement, 0), sqlite3_column_double(statement, 1)};
    sqlite3_reset(statement);
    return found;
}

bool NavDatabase::Lookup::mayGoOn() noexcept {
    if (hasEnded_) return false;
    const bool isWanted = isWanted_();
    isLate_ = isWanted && clock_.now() >= deadline_;
    hasEnded_ = !isWanted || isLate_;
    return !hasEnded_;
}

} // namespace tarnly
