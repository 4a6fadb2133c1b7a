#include "TarnlyTrack/Trial/ScriptFixes.hpp"

#include <stdexcept>
#include <string>

#include "TarnlyCore/NavData/NavDatabase.hpp"
#include "TarnlyCore/NavData/NavDatabaseProblem.hpp"
#include "TarnlyCore/NavData/NavFile.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {
namespace {

/// The one that is named, else the one that a companion on this computer has made, if there is one.
std::optional<std::string> databaseFor(const std::optional<std::filesystem::path>& file) {
    if (file) {
        auto named = file->string();
        if (const auto problem = problemOfNavDatabase(named)) throw UsageError("--nav-db: " + *problem);
        return named;
    }
    try {
        auto own = (applicationDataFolder() / ownNavFile).string();
        if (!problemOfNavDatabase(own)) return own;
    } catch (const std::runtime_error&) {
        return std::nullopt; // a person without a home folder
    }
    return std::nullopt;
}

} // namespace

void withFixes(const std::optional<std::filesystem::path>& file,
               const std::function<void(const FixResolver&)>& work) {
    const auto database = databaseFor(file);
    if (!database) return work({});
    const SystemClock clock;
    Guarded<std::optional<std::string>> trouble; // told on the database's thread
    const NavDatabase opened(
        *database, [&](const Phrase& warning) { trouble.with([&](auto& told) { told = warning.text(); }); });
    NavDatabase::Lookup fixes(opened, clock, [] { return true; });
    work([&](const std::string& ident) { return fixes.resolve(ident); });
    if (const auto told = trouble.copy()) throw TrackError("the fixes could not all be looked up: " + *told);
}

} // namespace tarnly::track
