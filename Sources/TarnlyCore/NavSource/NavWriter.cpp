#include "TarnlyCore/NavSource/NavWriter.hpp"

namespace tarnly {
namespace {

// The indexes come first: entries in their order are put at an index's end, which costs less than sorting.
constexpr const char* layout = R"sql(
CREATE TABLE enroute_fixes (fix_id TEXT, lat REAL, lon REAL, kind TEXT, name TEXT, area TEXT, region TEXT);
CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL, kind TEXT, name TEXT, area TEXT, region TEXT);
CREATE INDEX enroute_fixes_by_id ON enroute_fixes (fix_id);
CREATE INDEX navaids_by_id ON navaids (nav_id);
CREATE TABLE about (key TEXT PRIMARY KEY, value);
CREATE TABLE sources (name TEXT, size INTEGER, changed INTEGER, version INTEGER, cycle TEXT, build TEXT);
BEGIN;
)sql";

/// Makes the tables before there are statements that name them.
SqliteFile laidOut(const std::string& path) {
    SqliteFile file(path, SqliteFile::Mode::fill);
    file.execute(layout);
    return file;
}

std::string_view nameOf(NavKind kind) {
    switch (kind) {
        case NavKind::fix:
            return "fix";
        case NavKind::vor:
            return "VOR";
        case NavKind::ndb:
            return "NDB";
        case NavKind::dme:
            return "DME";
        case NavKind::airport:
            return "airport";
    }
    return {};
}

} // namespace

NavWriter::NavWriter(const std::string& path)
    : file_(laidOut(path)),
      fixes_(file_, "INSERT INTO enroute_fixes VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)"),
      navaids_(file_, "INSERT INTO navaids VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)") {}

void NavWriter::add(const NavEntry& entry) {
    const bool isEnRouteFix = entry.kind == NavKind::fix && entry.isEnRoute();
    insert(isEnRouteFix ? fixes_ : navaids_, entry);
}

void NavWriter::insert(SqliteStatement& statement, const NavEntry& entry) {
    statement.bind(1, entry.ident);
    statement.bind(2, entry.place.latitude);
    statement.bind(3, entry.place.longitude);
    statement.bind(4, nameOf(entry.kind));
    statement.bind(5, entry.name);
    statement.bind(6, entry.area);
    statement.bind(7, entry.region);
    statement.step();
    statement.reset();
}

void NavWriter::finish(const NavAbout& about) {
    SqliteStatement facts(file_,
                          "INSERT INTO about VALUES ('layout', ?1), ('cycle', ?2), ('build', ?3), "
                          "('folder', ?4)");
    facts.bind(1, std::int64_t{about.layout});
    facts.bind(2, about.cycle);
    facts.bind(3, about.build);
    facts.bind(4, about.folder);
    facts.step();
    SqliteStatement sources(file_, "INSERT INTO sources VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    for (const auto& source : about.sources) {
        sources.bind(1, source.name);
        sources.bind(2, source.size);
        sources.bind(3, source.changed);
        sources.bind(4, std::int64_t{source.version});
        sources.bind(5, source.cycle);
        sources.bind(6, source.build);
        sources.step();
        sources.reset();
    }
    file_.execute("COMMIT");
}

} // namespace tarnly
