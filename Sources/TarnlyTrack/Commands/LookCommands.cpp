#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Log/FlightSummary.hpp"
#include "TarnlyTrack/Output/Listing.hpp"

/// list, show: what a person wants to know of recordings before doing anything with them.
namespace tarnly::track {
namespace {

namespace fs = std::filesystem;

struct ListOptions {
    std::optional<fs::path> folder;
    bool isJson = false;
};

struct ShowOptions {
    fs::path file;
    bool isJson = false;
};

/// By name, which is by time.
std::vector<fs::path> recordingsIn(const fs::path& folder) {
    std::error_code error;
    std::vector<fs::path> files;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == ".jsonl") files.push_back(entry->path());
    }
    if (error) throw TrackError(printable(folder.string()) + " cannot be listed: " + error.message());
    std::ranges::sort(files);
    return files;
}

void list(CommandContext& context, const ListOptions& options) {
    const auto folder = options.folder ? *options.folder : applicationDataFolder() / "Recordings";
    const auto files = recordingsIn(folder);
    for (const auto& file : files) {
        try {
            const auto summary = summaryOf(context.read(file));
            const auto line = options.isJson ? listingJson(file, summary) : listingLine(file, summary);
            context.out << line << std::endl;
        } catch (const TrackError& error) {
            context.remark(error.what());
            context.exitCode = 1;
        }
    }
    if (files.empty()) context.remark("there are no recordings in " + printable(folder.string()));
}

void show(const CommandContext& context, const ShowOptions& options) {
    const auto log = context.read(options.file);
    if (options.isJson) {
        context.out << fullJson(options.file, log) << '\n';
        return;
    }
    for (const auto& line : fullLines(options.file, log))
        context.out << line << '\n';
}

} // namespace

void addListCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("list", "List the recordings of a folder, one a line");
    const auto options = std::make_shared<ListOptions>();
    command->add_option("FOLDER", options->folder, "Their folder; the companion's own when not given");
    command->add_flag("--json", options->isJson, "Print one JSON object a line");
    command->callback([&context, options] { list(context, *options); });
}

void addShowCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("show", "Show one recording in full, and what fired when and where");
    const auto options = std::make_shared<ShowOptions>();
    command->add_option("FILE", options->file, "The recording")->required();
    command->add_flag("--json", options->isJson, "Print a JSON object");
    command->callback([&context, options] { show(context, *options); });
}

} // namespace tarnly::track
