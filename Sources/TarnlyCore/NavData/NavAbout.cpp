#include "TarnlyCore/NavData/NavAbout.hpp"

#include <exception>

#include "TarnlyCore/NavData/SqliteFile.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

/// Rows: a file that has more of them is not ours.
constexpr std::size_t most = 100;

std::string value(const SqliteFile& file, std::string_view key) {
    SqliteStatement query(file, "SELECT value FROM about WHERE key = ?1");
    query.bind(1, key);
    return query.step() ? printable(query.text(0)) : std::string();
}

NavAbout aboutIn(const SqliteFile& file) {
    NavAbout about;
    SqliteStatement layout(file, "SELECT value FROM about WHERE key = 'layout'");
    about.layout = layout.step() ? static_cast<int>(layout.integer(0)) : 0;
    about.cycle = value(file, "cycle");
    about.build = value(file, "build");
    about.folder = value(file, "folder");
    SqliteStatement sources(file,
                            "SELECT name, size, changed, version, cycle, build FROM sources ORDER BY rowid");
    while (about.sources.size() < most && sources.step()) {
        about.sources.push_back({sources.text(0), sources.integer(1), sources.integer(2),
                                 static_cast<int>(sources.integer(3)), sources.text(4), sources.text(5)});
    }
    return about;
}

} // namespace

std::optional<NavAbout> readNavAbout(const std::string& path) {
    try {
        return aboutIn(SqliteFile(path, SqliteFile::Mode::read));
    } catch (const SqliteError&) {
        return std::nullopt; // somebody else's, or none
    }
}

} // namespace tarnly
