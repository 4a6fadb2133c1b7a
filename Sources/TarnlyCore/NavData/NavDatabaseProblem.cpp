#include "TarnlyCore/NavData/NavDatabaseProblem.hpp"

#include <sqlite3.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string_view>

#include "TarnlyCore/NavData/SqliteFile.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr const char* queries[] = {"SELECT fix_id, lat, lon FROM enroute_fixes",
                                   "SELECT nav_id, lat, lon FROM navaids"};
constexpr const char* wanted =
    "name an SQLite file with the table enroute_fixes (fix_id, lat, lon), navaids (nav_id, lat, lon) or both";

/// Views upon views may make the look at a table endless: what has not failed by then is no problem.
constexpr auto lookPatience = std::chrono::seconds(1);

struct Close {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
};

/// SQLite's word on whether the query can be asked.
int prepare(sqlite3* connection, const char* query) {
    constexpr int toItsNul = -1;
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(connection, query, toItsNul, &statement, nullptr);
    sqlite3_finalize(statement);
    return result;
}

/// Whether the system lacks something for now, which is no word on the file.
bool isScarcity(int error) { return error == EMFILE || error == ENFILE || error == ENOMEM; }

std::optional<std::string> problemOfFile(const std::string& path) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(sqlitePath(path).c_str(), &opened,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    const std::unique_ptr<sqlite3, Close> connection(opened);
    if (result == SQLITE_CANTOPEN && !isScarcity(sqlite3_system_errno(opened)))
        return "cannot be opened for reading; look at its permissions";
    if (result != SQLITE_OK) return std::nullopt;
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    auto deadline = SteadyClock::now() + lookPatience;
    sqlite3_set_authorizer(
        opened,
        [](void* until, int, const char*, const char*, const char*, const char*) {
            return SteadyClock::now() < *static_cast<const SteadyClock::time_point*>(until) ? SQLITE_OK
                                                                                            : SQLITE_DENY;
        },
        &deadline);
    for (const auto* query : queries) {
        const int found = prepare(opened, query);
        if (found == SQLITE_NOTADB) return std::string("is no SQLite database; ") + wanted;
        const bool isMissing = std::string_view(sqlite3_errmsg(opened)).starts_with("no such ");
        if (found != SQLITE_ERROR || !isMissing) return std::nullopt; // there it is, or nobody can say now
    }
    return std::string("has none of the tables of a navigation database; ") + wanted;
}

} // namespace

std::optional<std::string> problemOfNavDatabase(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    const auto shown = printable(path) + " ";
    if (status.type() == std::filesystem::file_type::not_found) return shown + "does not exist; " + wanted;
    if (std::filesystem::is_directory(status)) return shown + "is a folder; " + wanted;
    if (auto problem = problemOfFile(path)) return shown + *problem;
    return std::nullopt;
}

} // namespace tarnly
