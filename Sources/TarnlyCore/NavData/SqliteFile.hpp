#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tarnly {

/// SQLite could not do it; the text is SQLite's.
class SqliteError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The path as SQLite is to be given it. No file is to be something else by its name: SQLite may be built to
/// read one that begins with "file:" as a URI, and knows ":memory:".
std::string sqlitePath(const std::string& path);

/// A connection to an SQLite file, for one thread, which blocks as the disk does. What fails throws
/// `SqliteError`.
class SqliteFile {
  public:
    enum class Mode {
        /// Nothing in it is trusted, and after ten seconds it fails: views upon views may be endless.
        read,
        /// An empty file that is there, and that nobody else knows: without a journal.
        fill
    };

    SqliteFile(const std::string& path, Mode mode);

    /// Statements whose rows, if any, are of no interest.
    void execute(const std::string& statements);

    sqlite3* handle() const { return connection_.get(); }

  private:
    struct Close {
        void operator()(sqlite3* connection) const;
    };
    std::unique_ptr<std::chrono::steady_clock::time_point> deadline_;
    // depends-on: deadline_
    std::unique_ptr<sqlite3, Close> connection_;
};

/// One prepared statement. The file outlives it.
class SqliteStatement {
  public:
    SqliteStatement(const SqliteFile& file, const std::string& text);

    /// Parameters and columns, from 1 and from 0. Text must stay until the statement is reset.
    void bind(int parameter, std::string_view text);
    void bind(int parameter, double value);
    void bind(int parameter, std::int64_t value);

    /// Whether there is a row, or another one.
    bool step();
    void reset();

    /// Empty for NULL; up to its first NUL.
    std::string text(int column) const;
    double number(int column) const;
    std::int64_t integer(int column) const;

  private:
    void require(int result) const;

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    sqlite3* connection_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

} // namespace tarnly
