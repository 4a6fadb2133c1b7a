#include <CLI/App.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/NavData/NavCatalogue.hpp"
#include "TarnlyCore/NavData/NavDatabaseProblem.hpp"
#include "TarnlyCore/NavData/NavFile.hpp"
#include "TarnlyNavdb/CommandLine.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::navdb {
namespace {

struct FindOptions {
    std::string ident;
    std::optional<std::filesystem::path> database;
    bool json = false;
};

/// An entry as programs read it.
struct FoundEntry {
    std::string ident;
    std::string kind;
    std::optional<std::string> name;
    std::optional<std::string> area;
    std::optional<std::string> region;
    double latitude = 0;
    double longitude = 0;

    static constexpr auto fields() {
        return std::tuple(field("ident", &FoundEntry::ident), field("kind", &FoundEntry::kind),
                          field("name", &FoundEntry::name), field("area", &FoundEntry::area),
                          field("region", &FoundEntry::region), field("lat", &FoundEntry::latitude),
                          field("lon", &FoundEntry::longitude));
    }
};

std::optional<std::string> told(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

std::string jsonOf(const NavListing& listing) {
    return encodeJson(FoundEntry{listing.ident, listing.kind, told(listing.name), told(listing.area),
                                 told(listing.region), listing.place.latitude, listing.place.longitude});
}

std::string orDash(const std::string& text) { return text.empty() ? "-" : text; }

/// "52.300000 9.100000": degrees, some ten centimetres.
std::string placeText(const Coordinate& place) {
    char text[64];
    std::snprintf(text, sizeof text, "%.6f %.6f", place.latitude, place.longitude);
    return text;
}

std::string lineOf(const NavListing& listing) {
    auto line = printable(listing.ident) + "  " + listing.kind + "  " + orDash(listing.area) + "  " +
                orDash(listing.region) + "  " + placeText(listing.place);
    if (!listing.name.empty()) line += "  " + listing.name;
    return line;
}

std::string databaseOf(const FindOptions& options) {
    const auto path = options.database ? *options.database : applicationDataFolder() / ownNavFile;
    const auto problem = problemOfNavDatabase(path.string());
    if (!problem) return path.string();
    if (options.database) throw UsageError("--nav-db: " + *problem);
    throw UsageError(
        "the companion has not made a database of the simulator's navigation data yet; start it, "
        "or make one by tarnly-navdb build -o FILE, and name it by --nav-db FILE");
}

void tellOfNone(const Context& context, const NavCatalogue& catalogue, const std::string& ident) {
    constexpr std::size_t most = 8;
    std::string text = "\"" + printable(ident) + "\" is not there";
    std::string names;
    for (const auto& name : catalogue.near(ident, most))
        names += (names.empty() ? "; did you mean " : ", ") + name;
    context.streams.remark(text + names + (names.empty() ? "" : "?"));
}

void run(Context& context, const FindOptions& options) {
    const NavCatalogue catalogue(databaseOf(options));
    const auto found = catalogue.find(options.ident);
    for (const auto& listing : found)
        context.streams.out << (options.json ? jsonOf(listing) : lineOf(listing)) << '\n';
    context.streams.out << std::flush;
    if (!found.empty()) return;
    tellOfNone(context, catalogue, options.ident);
    context.exitCode = 1;
}

} // namespace

void addFindCommand(CLI::App& app, Context& context) {
    auto* command = app.add_subcommand("find", "Show all places of a name, the one that scripts get first");
    const auto options = std::make_shared<FindOptions>();
    command->add_option("IDENT", options->ident, "The identifier, in any letter case")->required();
    command
        ->add_option("--nav-db", options->database,
                     "The database, the one that the companion has made when not given")
        ->type_name("FILE");
    command->add_flag("--json", options->json, "Print one JSON object a line");
    command->callback([&context, options] { run(context, *options); });
}

} // namespace tarnly::navdb
