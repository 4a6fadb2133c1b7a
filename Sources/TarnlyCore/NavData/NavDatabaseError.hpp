#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnly {

/// A navigation database that cannot be used. `what()` is what a person is shown:
/// `openFailed(path: "nav.db", message: "unable to open database file")`.
class NavDatabaseError : public std::runtime_error {
  public:
    /// `path` as it was given, `message` as SQLite gave it.
    static NavDatabaseError openFailed(std::string_view path, std::string_view message);

  private:
    using std::runtime_error::runtime_error;
};

} // namespace tarnly
