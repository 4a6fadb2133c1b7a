#include "TarnlyCore/NavSource/NavSources.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <optional>
#include <system_error>
#include <utility>

#include "TarnlyCore/NavSource/NavText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

/// Bytes: more than a header has, and the note of a provider.
constexpr std::size_t longestBeginning = 4096;

// No objects: a thread that a mount keeps outlives those at the end of the process.
fs::path shipped() { return fs::path("Resources") / "default data"; }
fs::path provided() { return "Custom Data"; }

std::array<fs::path, 2> placedByHand() {
    const auto airports = fs::path("Global Airports") / "Earth nav data" / "earth_nav.dat";
    return {"Global Scenery" / airports, "Custom Scenery" / airports};
}

constexpr const char* fixFile = "earth_fix.dat";
constexpr const char* navaidFile = "earth_nav.dat";
constexpr const char* airportFile = "earth_aptmeta.dat";

bool hasBytes(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) return false;
    const auto size = fs::file_size(file, error);
    return !error && size > 0;
}

std::string beginningOf(const fs::path& file) {
    std::string text(longestBeginning, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

std::int64_t microsecondsOf(const fs::path& file) {
    const auto time = modificationTime(file);
    return std::chrono::floor<std::chrono::microseconds>(time.time_since_epoch()).count();
}

std::string digitsFrom(std::string_view text, std::size_t count) {
    const auto first = text.find_first_of("0123456789");
    if (first == std::string_view::npos) return {};
    const auto digits =
        text.substr(first, std::min(text.find_first_not_of("0123456789", first), text.size()) - first);
    return digits.size() == count ? std::string(digits) : std::string();
}

/// What a provider notes beside its files, whose headers may not tell it.
std::string notedCycle(const fs::path& folder) {
    constexpr std::pair<const char*, std::string_view> notes[] = {{"cycle_info.txt", "AIRAC cycle"},
                                                                  {"cycle.json", "\"cycle\""}};
    for (const auto& [name, label] : notes) {
        const auto text = beginningOf(folder / name);
        const auto place = text.find(label);
        if (place == std::string::npos) continue;
        const auto line = std::string_view(text).substr(place + label.size());
        auto cycle = digitsFrom(line.substr(0, line.find_first_of(",}\n")), 4);
        if (!cycle.empty()) return cycle;
    }
    return {};
}

/// Collects the files of one simulator.
class Choice {
  public:
    explicit Choice(const fs::path& folder) { found_.folder = folder; }

    NavSources made() {
        const bool isProvided = chooseBase();
        const auto place = isProvided ? provided() : shipped();
        addWanted(NavFileKind::fixes, place / fixFile);
        addWanted(NavFileKind::navaids, place / navaidFile);
        noteCycle(isProvided);
        const bool hasOwnAirports = isProvided && isThere(provided() / airportFile);
        addIfThere(NavFileKind::airports, (hasOwnAirports ? provided() : shipped()) / airportFile,
                   NavSource::Layer::base);
        for (const auto& file : placedByHand())
            if (addIfThere(NavFileKind::navaids, file, NavSource::Layer::placedByHand)) break;
        addIfThere(NavFileKind::fixes, provided() / "user_fix.dat", NavSource::Layer::users);
        addIfThere(NavFileKind::navaids, provided() / "user_nav.dat", NavSource::Layer::users);
        return std::move(found_);
    }

  private:
    bool isThere(const fs::path& file) const { return hasBytes(found_.folder / file); }

    void warn(Phrase text) { found_.warnings.push_back(std::move(text)); }

    std::string shown(const fs::path& file) const { return printable((found_.folder / file).string()); }

    /// Whether a provider's files are in force.
    bool chooseBase() {
        if (isThere(provided() / "earth_424.dat")) {
            warn(Phrase::of(
                "The simulator reads %1 in place of the text files, which cannot be read here: the fixes "
                "come "
                "from the text files, and may be others than the simulator's. Have your provider of "
                "navigation data install the text files (earth_fix.dat, earth_nav.dat) too.",
                shown(provided() / "earth_424.dat")));
        }
        const bool hasFixes = isThere(provided() / fixFile);
        const bool hasNavaids = isThere(provided() / navaidFile);
        if (hasFixes != hasNavaids) {
            warn(Phrase::of(
                "%1 has %2 without %3, so neither is used: the two belong together. Have your provider of "
                "navigation data install both.",
                shown(provided()), hasFixes ? fixFile : navaidFile, hasFixes ? navaidFile : fixFile));
        }
        return hasFixes && hasNavaids;
    }

    /// Of the format and all; absent where the file cannot be used, with `problem` saying why.
    std::optional<NavSource> read(NavFileKind kind, const fs::path& file, Phrase& problem) {
        NavSource source{kind, found_.folder / file};
        NavText text(kind, [](const NavEntry&) {});
        text.feed(beginningOf(source.path));
        text.finish();
        if (!text.header()) {
            problem = Phrase::of("does not say in its second line which format it has");
            return std::nullopt;
        }
        const auto& header = *text.header();
        if (header.version < NavFormat::oldest) {
            problem = Phrase::of("has the format %1, and those before %2 cannot be read",
                                 std::to_string(header.version), std::to_string(NavFormat::oldest));
            return std::nullopt;
        }
        if (header.version > NavFormat::newest(kind)) {
            warn(Phrase::of(
                "%1 has the format %2, newer than %3, and is read as that one: fixes may be "
                "missing. Look for a newer version of Tarnly.",
                shown(file), std::to_string(header.version), std::to_string(NavFormat::newest(kind))));
        }
        source.stamp = {file.generic_string(),
                        static_cast<std::int64_t>(fs::file_size(source.path)),
                        microsecondsOf(source.path),
                        header.version,
                        header.cycle,
                        header.build};
        return source;
    }

    NavSourceError refusal(NavSourceError::Case which, const fs::path& file, const Phrase& problem) const {
        return {which, Phrase::of("%1 %2. Name the folder of X-Plane 11 or 12, or have it repaired by its "
                                  "installer.",
                                  shown(file), problem)};
    }

    void addWanted(NavFileKind kind, const fs::path& file) {
        if (!isThere(file)) throw refusal(NavSourceError::Case::noData, file, Phrase::of("is missing"));
        Phrase problem;
        auto source = read(kind, file, problem);
        if (!source) throw refusal(NavSourceError::Case::unusable, file, problem);
        found_.files.push_back(std::move(*source));
    }

    bool addIfThere(NavFileKind kind, const fs::path& file, NavSource::Layer layer) {
        if (!isThere(file)) return false;
        Phrase problem;
        auto source = read(kind, file, problem);
        if (!source) {
            warn(Phrase::of("%1 %2, so it is left out. Make it anew, or remove it.", shown(file), problem));
            return false;
        }
        source->layer = layer;
        found_.files.push_back(std::move(*source));
        return true;
    }

    void noteCycle(bool isProvided) {
        const auto& fixes = found_.files.front().stamp;
        const auto& navaids = found_.files.back().stamp;
        found_.cycle = fixes.cycle.empty() ? navaids.cycle : fixes.cycle;
        found_.build = fixes.build.empty() ? navaids.build : fixes.build;
        if (!fixes.cycle.empty() && !navaids.cycle.empty() && fixes.cycle != navaids.cycle) {
            warn(Phrase::of(
                "Fixes and navaids in %1 are of different cycles, %2 and %3. Have the navigation data "
                "installed anew.",
                printable((found_.folder / provided()).parent_path().string()), fixes.cycle, navaids.cycle));
        }
        if (found_.cycle.empty() && isProvided) found_.cycle = notedCycle(found_.folder / provided());
    }

    NavSources found_;
};

} // namespace

NavAbout NavSources::about() const {
    NavAbout about{NavAbout::presentLayout, cycle, build, printable(folder.string())};
    for (const auto& file : files)
        about.sources.push_back(file.stamp);
    return about;
}

NavSources findNavSources(const fs::path& simulatorFolder) { return Choice(simulatorFolder).made(); }

bool hasNavData(const fs::path& simulatorFolder) {
    return hasBytes(simulatorFolder / shipped() / navaidFile);
}

} // namespace tarnly
