#include "TarnlyCore/NavData/SqliteFile.hpp"

#include <sqlite3.h>

#include <chrono>
#include <filesystem>

namespace tarnly {
namespace {

int flagsFor(SqliteFile::Mode mode) {
    return SQLITE_OPEN_NOMUTEX |
           (mode == SqliteFile::Mode::read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
}

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds patience{10};
/// Steps of SQLite's machine between two looks at the clock: less than a millisecond.
constexpr int stepsBetweenLooks = 1000;

bool isPast(void* deadline) {
    return SteadyClock::now() >= *static_cast<const SteadyClock::time_point*>(deadline);
}

/// Nothing in the file is to be trusted.
void distrust(sqlite3* connection, void* deadline) {
    constexpr int longestValue = 100'000;
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_progress_handler(
        connection, stepsBetweenLooks, [](void* until) { return isPast(until) ? 1 : 0; }, deadline);
    // While a statement is prepared there are no steps.
    sqlite3_set_authorizer(
        connection,
        [](void* until, int, const char*, const char*, const char*, const char*) {
            return isPast(until) ? SQLITE_DENY : SQLITE_OK;
        },
        deadline);
}

} // namespace

std::string sqlitePath(const std::string& path) {
    return std::filesystem::path(path).is_absolute() ? path : "./" + path;
}

void SqliteFile::Close::operator()(sqlite3* connection) const { sqlite3_close(connection); }

void SqliteStatement::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

SqliteFile::SqliteFile(const std::string& path, Mode mode)
    : deadline_(std::make_unique<SteadyClock::time_point>(SteadyClock::now() + patience)) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(sqlitePath(path).c_str(), &opened, flagsFor(mode), nullptr);
    connection_.reset(opened);
    if (result != SQLITE_OK) throw SqliteError(opened ? sqlite3_errmsg(opened) : "out of memory");
    if (mode == Mode::fill) {
        execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE");
    } else {
        distrust(opened, deadline_.get());
    }
}

void SqliteFile::execute(const std::string& statements) {
    if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw SqliteError(sqlite3_errmsg(handle()));
}

SqliteStatement::SqliteStatement(const SqliteFile& file, const std::string& text)
    : connection_(file.handle()) {
    constexpr int toItsNul = -1;
    sqlite3_stmt* prepared = nullptr;
    const int result = sqlite3_prepare_v2(connection_, text.c_str(), toItsNul, &prepared, nullptr);
    statement_.reset(prepared);
    require(result);
}

void SqliteStatement::bind(int parameter, std::string_view text) {
    require(sqlite3_bind_text(statement_.get(), parameter, text.data(), static_cast<int>(text.size()),
                              SQLITE_STATIC));
}

void SqliteStatement::bind(int parameter, double value) {
    require(sqlite3_bind_double(statement_.get(), parameter, value));
}

void SqliteStatement::bind(int parameter, std::int64_t value) {
    require(sqlite3_bind_int64(statement_.get(), parameter, value));
}

bool SqliteStatement::step() {
    const int result = sqlite3_step(statement_.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) throw SqliteError(sqlite3_errmsg(connection_));
    return result == SQLITE_ROW;
}

void SqliteStatement::reset() { sqlite3_reset(statement_.get()); }

std::string SqliteStatement::text(int column) const {
    const auto* const bytes = sqlite3_column_text(statement_.get(), column);
    return bytes == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(bytes));
}

double SqliteStatement::number(int column) const { return sqlite3_column_double(statement_.get(), column); }

std::int64_t SqliteStatement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

void SqliteStatement::require(int result) const {
    if (result != SQLITE_OK) throw SqliteError(sqlite3_errmsg(connection_));
}

} // namespace tarnly
