#include "TarnlyCore/NavData/NavCatalogue.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

struct Table {
    const char* name;
    const char* ident;
    const char* kind;
};

/// In the order in which scripts look for a fix.
constexpr Table tables[] = {{"enroute_fixes", "fix_id", "fix"}, {"navaids", "nav_id", "navaid"}};

/// Of one that Tarnly has not made, the columns that each has.
std::optional<SqliteStatement> query(const SqliteFile& file, const Table& table, bool isFull) {
    const std::string more = isFull ? ", kind, name, area, region" : "";
    try {
        return SqliteStatement(file, std::string("SELECT lat, lon") + more + " FROM " + table.name +
                                         " WHERE " + table.ident + " = ?1");
    } catch (const SqliteError&) {
        return std::nullopt;
    }
}

void addFrom(const SqliteFile& file, const Table& table, const std::string& ident,
             std::vector<NavListing>& found) {
    auto rows = query(file, table, true);
    const bool isFull = rows.has_value();
    if (!rows) rows = query(file, table, false);
    if (!rows) return; // not everybody needs both
    rows->bind(1, ident);
    while (rows->step()) {
        NavListing listing{ident, table.kind, {}, {}, {}, {rows->number(0), rows->number(1)}};
        if (isFull) {
            listing.kind = printable(rows->text(2));
            listing.name = printable(rows->text(3));
            listing.area = printable(rows->text(4));
            listing.region = printable(rows->text(5));
        }
        found.push_back(std::move(listing));
    }
}

/// Whether they are the same but for one letter, which may stand in place of another, be one too many or too
/// few, or have changed places with its neighbour.
bool isNear(std::string_view one, std::string_view other) {
    const auto [left, right] = std::ranges::mismatch(one, other);
    const auto place = static_cast<std::size_t>(left - one.begin());
    const auto a = one.substr(place);
    const auto b = other.substr(place);
    if (a.empty() || b.empty()) return a.size() + b.size() == 1;
    if (a.substr(1) == b.substr(1) || a.substr(1) == b || a == b.substr(1)) return true;
    return a.size() > 1 && b.size() > 1 && a[0] == b[1] && a[1] == b[0] && a.substr(2) == b.substr(2);
}

} // namespace

NavCatalogue::NavCatalogue(const std::string& path) : file_(path, SqliteFile::Mode::read) {}

std::vector<NavListing> NavCatalogue::find(const std::string& ident) const {
    std::vector<NavListing> found;
    const auto wanted = upperCased(ident);
    for (const auto& table : tables)
        addFrom(file_, table, wanted, found);
    return found;
}

std::vector<std::string> NavCatalogue::near(const std::string& ident, std::size_t most) const {
    const auto wanted = upperCased(ident);
    std::vector<std::string> found;
    for (const auto& table : tables) {
        try {
            SqliteStatement all(file_, std::string("SELECT DISTINCT ") + table.ident + " FROM " + table.name);
            while (all.step()) {
                auto other = all.text(0);
                if (isNear(wanted, other)) found.push_back(printable(other));
            }
        } catch (const SqliteError&) {
            continue; // not everybody needs both
        }
    }
    std::ranges::sort(found);
    found.erase(std::ranges::unique(found).begin(), found.end());
    found.resize(std::min(found.size(), most));
    return found;
}

} // namespace tarnly
