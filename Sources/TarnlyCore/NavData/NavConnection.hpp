#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

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

class NavDatabaseError : public Error<NavDatabaseErrorCases> {
  public:
    /// `openFailed`.
    NavDatabaseError(const std::string& path, const std::string& message);

    /// What `what` says, with its parts.
    const Phrase& told() const noexcept { return told_; }

  private:
    Phrase told_;
};

/// The talk with SQLite about one file. Owned by the `NavDatabase`; used by one thread at a time, which
/// blocks for as long as the disk does.
class NavConnection {
  public:
    struct Answer {
        std::optional<Coordinate> found{};
        /// Why it may be there although it was not found; empty where the search came to its end.
        std::string failure{};
    };

    /// Throws `NavDatabaseError::openFailed` when SQLite does not open `path`, which is a file's whatever it
    /// begins with, and `std::bad_alloc`. A file that exists is opened without looking into it.
    explicit NavConnection(const std::string& path);

    NavConnection(const NavConnection&) = delete;
    NavConnection& operator=(const NavConnection&) = delete;
    ~NavConnection();

    /// The first en-route fix of that identifier, else the first such navaid. Ends within a millisecond or so
    /// of processor time once `isOver`, which another thread may set; what it answers then means nothing.
    Answer find(const std::string& id, const std::atomic<bool>& isOver);

  private:
    struct Close {
        void operator()(sqlite3* connection) const;
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    /// Prepared when it is first asked; null while that fails.
    struct Query {
        const char* sql;
        std::unique_ptr<sqlite3_stmt, Finalize> statement{};
        /// As far as is known.
        bool isTableMissing = false;
    };

    void distrust();
    void beInterruptible();
    Answer find(Query& query, const std::string& id);
    /// What SQLite has to say of its last failure, and the system.
    std::string failure() const;
    /// Called from within SQLite, hence throws nothing.
    bool mayGoOn() const noexcept { return isOver_ == nullptr || !*isOver_; }

    std::unique_ptr<sqlite3, Close> connection_;
    /// Of the search under way.
    const std::atomic<bool>* isOver_ = nullptr;
    // depends-on: connection_
    Query fixes_;
    Query navaids_;
};

} // namespace tarnly
