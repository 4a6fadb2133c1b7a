#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <sqlite3.h>

#include <utility>

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

/// One connection for as long as it lives; waits for one that is free.
class NavDatabase::Loan {
  public:
    explicit Loan(const NavDatabase& owner) : owner_(owner) {
        owner_.available_.acquire();
        connection_ = owner_.idle_.with([](auto& idle) {
            auto last = std::move(idle.back());
            idle.pop_back();
            return last;
        });
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() {
        owner_.idle_.with([&](auto& idle) { idle.push_back(std::move(connection_)); });
        owner_.available_.release();
    }

    sqlite3* connection() const { return connection_.get(); }

  private:
    const NavDatabase& owner_;
    Connection connection_;
};

NavDatabase::NavDatabase(const std::string& path) {
    idle_.with([&](auto& idle) {
        for (std::size_t number = 0; number < sideBySide; ++number)
            idle.push_back(open(path));
    });
}

NavDatabase::Connection NavDatabase::open(const std::string& path) {
    sqlite3* opened = nullptr;
    // Without a lock of its own: each is used by one thread at a time.
    const int result =
        sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    Connection connection(opened);
    if (result == SQLITE_OK) return connection;
    const char* message = opened ? sqlite3_errmsg(opened) : "unknown error";
    throw NavDatabaseError(NavDatabaseError::Case::openFailed, {{"path", path}, {"message", message}});
}

std::optional<Coordinate> NavDatabase::resolve(const std::string& id) const {
    const auto key = upperCased(id);
    const Loan loan(*this);
    auto found = find(loan.connection(), fixQuery, key);
    if (!found) found = find(loan.connection(), navaidQuery, key);
    return found;
}

} // namespace tarnly
