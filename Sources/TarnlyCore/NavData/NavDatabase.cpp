#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <sqlite3.h>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr const char* fixQuery = "SELECT lat, lon FROM enroute_fixes WHERE fix_id = ?1";
constexpr const char* navaidQuery = "SELECT lat, lon FROM navaids WHERE nav_id = ?1";

constexpr int toItsNul = -1;

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

/// Null when the table is missing or the file is no database.
Statement prepare(sqlite3* connection, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection, sql, toItsNul, &statement, nullptr);
    return Statement(statement);
}

std::optional<Coordinate> find(sqlite3* connection, const char* sql, const std::string& key) {
    const auto statement = prepare(connection, sql);
    if (!statement) return std::nullopt;
    sqlite3_bind_text(statement.get(), 1, key.c_str(), toItsNul, SQLITE_TRANSIENT);
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return std::nullopt;
    return Coordinate{sqlite3_column_double(statement.get(), 0), sqlite3_column_double(statement.get(), 1)};
}

} // namespace

void NavDatabase::Close::operator()(sqlite3* connection) const { sqlite3_close(connection); }

NavDatabase::NavDatabase(const std::string& path) {
    connection_.with([&](auto& connection) {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
        connection.reset(opened);
        if (result == SQLITE_OK) return;
        const char* message = opened ? sqlite3_errmsg(opened) : "unknown error";
        throw NavDatabaseError(NavDatabaseError::Case::openFailed, {{"path", path}, {"message", message}});
    });
}

std::optional<Coordinate> NavDatabase::resolve(const std::string& id) const {
    const auto key = upperCased(id);
    return connection_.with([&](const auto& connection) {
        auto found = find(connection.get(), fixQuery, key);
        if (!found) found = find(connection.get(), navaidQuery, key);
        return found;
    });
}

} // namespace tarnly
