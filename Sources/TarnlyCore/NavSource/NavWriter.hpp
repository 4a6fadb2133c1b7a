#pragma once

#include <cstdint>
#include <string>

#include "TarnlyCore/NavData/NavAbout.hpp"
#include "TarnlyCore/NavData/SqliteFile.hpp"
#include "TarnlyCore/NavSource/NavRow.hpp"

namespace tarnly {

/// Fills an empty file that nobody else knows with the tables of a navigation database: en-route fixes in
/// one, all else in the other. Belongs to one thread, which it blocks. Throws `SqliteError`.
class NavWriter {
  public:
    explicit NavWriter(const std::string& path);

    /// In the order in which entries of one name count; fastest by name.
    void add(const NavEntry& entry);

    /// After the last one.
    void finish(const NavAbout& about);

  private:
    void insert(SqliteStatement& statement, const NavEntry& entry);

    SqliteFile file_;
    SqliteStatement fixes_;
    SqliteStatement navaids_;
};

} // namespace tarnly
