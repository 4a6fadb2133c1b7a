#include "TarnlyCore/NavData/NavConnection.hpp"

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "TarnlyCore/NavData/SqliteFile.hpp"

namespace tarnly {
namespace {

constexpr const char* fixQuery = "SELECT lat, lon FROM enroute_fixes WHERE fix_id = ?1";
constexpr const char* navaidQuery = "SELECT lat, lon FROM navaids WHERE nav_id = ?1";

constexpr int toItsNul = -1;

/// Steps of SQLite's machine between two looks at whether to go on: less than a millisecond.
constexpr int stepsBetweenQuestions = 1000;
/// How long to leave a file alone that somebody writes.
constexpr auto writersTurn = std::chrono::milliseconds(10);

// A row has a few dozen bytes. What takes more is no such row, and a single step over it may take as long as
// it likes.
constexpr int longestValue = 100'000;
constexpr sqlite3_int64 mostMemory = 32 * 1024 * 1024;

} // namespace

NavDatabaseError::NavDatabaseError(const std::string& path, const std::string& message)
    : Error(Case::openFailed, {{"path", path}, {"message", message}}),
      told_(Phrase::of("openFailed(path: %1, message: %2)", tarnly::quoted(path), tarnly::quoted(message))) {}

void NavConnection::Close::operator()(sqlite3* connection) const { sqlite3_close(connection); }

void NavConnection::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

NavConnection::NavConnection(const std::string& path) : fixes_{fixQuery}, navaids_{navaidQuery} {
    sqlite3* opened = nullptr;
    // Without a lock of its own: it is used by one thread at a time.
    const int result = sqlite3_open_v2(sqlitePath(path).c_str(), &opened,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    connection_.reset(opened);
    if (result != SQLITE_OK) {
        const char* message = opened ? sqlite3_errmsg(opened) : "unknown error";
        throw NavDatabaseError(path, message);
    }
    distrust();
    beInterruptible();
}

NavConnection::~NavConnection() = default;

/// Nothing in the file is to be trusted.
void NavConnection::distrust() {
    sqlite3_hard_heap_limit64(mostMemory);
    sqlite3_limit(connection_.get(), SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_db_config(connection_.get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(connection_.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
}

void NavConnection::beInterruptible() {
    sqlite3_progress_handler(
        connection_.get(), stepsBetweenQuestions,
        [](void* me) { return static_cast<NavConnection*>(me)->mayGoOn() ? 0 : 1; }, this);
    sqlite3_busy_handler(
        connection_.get(),
        [](void* me, int) {
            std::this_thread::sleep_for(writersTurn);
            return static_cast<NavConnection*>(me)->mayGoOn() ? 1 : 0;
        },
        this);
    // While a statement is prepared there are no steps: views upon views may make that long, too.
    sqlite3_set_authorizer(
        connection_.get(),
        [](void* me, int, const char*, const char*, const char*, const char*) {
            return static_cast<NavConnection*>(me)->mayGoOn() ? SQLITE_OK : SQLITE_DENY;
        },
        this);
}

NavConnection::Answer NavConnection::find(const std::string& id, const std::atomic<bool>& isOver) {
    isOver_ = &isOver;
    auto answer = find(fixes_, id);
    if (!answer.found) {
        auto navaid = find(navaids_, id);
        // One of the two may be missing: not everybody needs both.
        const bool isOneMissing = fixes_.isTableMissing != navaids_.isTableMissing;
        if (isOneMissing) (fixes_.isTableMissing ? answer : navaid).failure.clear();
        if (answer.failure.empty()) answer.failure = std::move(navaid.failure);
        answer.found = navaid.found;
    }
    isOver_ = nullptr;
    return answer;
}

NavConnection::Answer NavConnection::find(Query& query, const std::string& id) {
    if (!query.statement) {
        sqlite3_stmt* prepared = nullptr;
        const int result = sqlite3_prepare_v2(connection_.get(), query.sql, toItsNul, &prepared, nullptr);
        query.statement.reset(prepared);
        query.isTableMissing = result == SQLITE_ERROR;
        if (prepared == nullptr) return {{}, failure()};
    }
    const auto statement = query.statement.get();
    Answer answer;
    if (sqlite3_bind_text(statement, 1, id.c_str(), toItsNul, SQLITE_TRANSIENT) != SQLITE_OK)
        return {{}, failure()};
    const int result = sqlite3_step(statement);
    if (result == SQLITE_ROW) {
        answer.found = Coordinate{sqlite3_column_double(statement, 0), sqlite3_column_double(statement, 1)};
    } else if (result != SQLITE_DONE) {
        answer.failure = failure();
    }
    sqlite3_reset(statement);
    return answer;
}

std::string NavConnection::failure() const {
    std::string text = sqlite3_errmsg(connection_.get());
    const int code = sqlite3_errcode(connection_.get());
    const bool isSystems = code == SQLITE_IOERR || code == SQLITE_CANTOPEN;
    const int number = isSystems ? sqlite3_system_errno(connection_.get()) : 0;
    if (number != 0) text += ": " + std::generic_category().message(number);
    return text;
}

} // namespace tarnly
