#include <array>
#include <charconv>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Export/Export.hpp"
#include "TarnlyTrack/Log/LogName.hpp"
#include "TarnlyTrack/Output/Listing.hpp"
#include "TarnlyTrack/Output/Progress.hpp"

/// export: a recording as a file of another format.
namespace tarnly::track {
namespace {

struct Format {
    std::string_view name;
    void (*write)(const ExportedFlight&, TextSink&);
};

constexpr std::array formats{Format{"gpx", exportGpx}, Format{"kml", exportKml}, Format{"csv", exportCsv},
                             Format{"geojson", exportGeoJson}};

struct ExportOptions {
    std::filesystem::path file;
    std::string format;
    std::optional<std::filesystem::path> output;
    std::optional<std::string> aircraft;
    std::optional<std::string> utcStart;
};

const Format& formatNamed(const std::string& name) {
    for (const auto& format : formats) {
        if (format.name == name) return format;
    }
    throw UsageError("--format takes gpx, kml, csv or geojson");
}

Moment startOf(const ExportOptions& options) {
    if (options.utcStart) {
        if (const auto start = parseIsoTime(*options.utcStart)) return *start;
        throw UsageError("--utc-start takes a moment in UTC such as 2026-11-16T01:09:38Z");
    }
    if (const auto start = startByName(options.file)) return *start;
    throw UsageError(
        printable(options.file.filename().string()) +
        " does not have the name that the companion gave it, which tells when it was begun: say so "
        "by --utc-start, as in --utc-start 2026-11-16T01:09:38Z");
}

std::unique_ptr<TextSink> sinkFor(const CommandContext& context, const ExportOptions& options) {
    if (!options.output) return std::make_unique<StreamSink>(context.out);
    std::error_code none; // as where there is no such file yet
    if (std::filesystem::equivalent(options.file, *options.output, none))
        throw UsageError("the export would take the place of the recording: give it another name by -o");
    return std::make_unique<FileSink>(*options.output);
}

void runExport(const CommandContext& context, const ExportOptions& options) {
    const auto& format = formatNamed(options.format);
    const auto start = startOf(options);
    const auto log = context.read(options.file);
    const auto sink = sinkFor(context, options);
    {
        Progress progress(context.err, context.isWatched);
        ExportedFlight flight{log, start, wellFormedUtf8(options.file.stem().string()), std::nullopt, {}};
        if (options.aircraft) flight.aircraft = wellFormedUtf8(*options.aircraft);
        flight.progress = [&](std::size_t done, std::size_t all) { progress.show("writing", done, all); };
        format.write(flight, *sink);
        sink->finish();
    }
    if (const auto faults = faultsText(log.faults); !faults.empty())
        context.remark(printable(options.file.filename().string()) + " has " + faults);
}

} // namespace

void addExportCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("export", "Make a file of another format of a recording");
    const auto options = std::make_shared<ExportOptions>();
    command->add_option("FILE", options->file, "The recording")->required();
    command->add_option("--format", options->format, "The format: gpx, kml, csv, geojson")
        ->type_name("FORMAT")
        ->required();
    command
        ->add_option("-o,--output", options->output, "The file to write; the standard output when not given")
        ->type_name("FILE");
    command
        ->add_option("--aircraft", options->aircraft, "What the aircraft is called, for the file to say so")
        ->type_name("NAME");
    command
        ->add_option("--utc-start", options->utcStart,
                     "When the recording was begun, for one that has been renamed")
        ->type_name("TIME");
    command->callback([&context, options] { runExport(context, *options); });
}

} // namespace tarnly::track
