#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Commands/PlotGrades.hpp"
#include "TarnlyTrack/Commands/PlotTrial.hpp"
#include "TarnlyTrack/Commands/TolerancesFile.hpp"
#include "TarnlyTrack/Log/LogName.hpp"
#include "TarnlyTrack/Output/Listing.hpp"
#include "TarnlyTrack/Output/TextSink.hpp"
#include "TarnlyTrack/Output/Words.hpp"
#include "TarnlyTrack/Plot/PlotPage.hpp"
#include "TarnlyTrack/Plot/PlotPicture.hpp"
#include "TarnlyTrack/Trial/ScriptFile.hpp"
#include "TarnlyTrack/Trial/ScriptFlights.hpp"

/// plot: recordings as a page or a picture.
namespace tarnly::track {
namespace {

namespace fs = std::filesystem;

struct PlotOptions {
    std::vector<fs::path> files;
    std::optional<fs::path> output;
    bool isPicture = false;
    std::optional<std::string> script;
    std::optional<fs::path> navigationDatabase;
    std::optional<fs::path> tolerances;
};

std::optional<std::string> startOf(const fs::path& file) {
    const auto start = startByName(file);
    return start ? std::optional(isoTime(*start)) : std::nullopt;
}

/// What of the file is not drawn.
void tellFaults(const CommandContext& context, const fs::path& file, const FlightLog& log,
                const PlotFlight& flight) {
    const auto name = printable(file.filename().string());
    if (const auto faults = faultsText(log.faults); !faults.empty()) context.remark(name + " has " + faults);
    if (flight.leftOut == 0) return;
    context.remark(name + " has two recordings: the second one, of " + std::to_string(flight.leftOut) +
                   " samples, is not drawn");
}

/// The flight of a file, with what `fly`, where there is one, makes of the script, graded by `tolerances`.
PlotFlight flightOf(const CommandContext& context, const PlotOptions& options, const fs::path& file,
                    const ScriptFlight& fly, const std::vector<Tolerance>& tolerances) {
    const auto columns = options.isPicture ? pictureColumns : plotColumns(options.files.size());
    const auto name = file.filename().string();
    const auto log = context.read(file);
    const auto trial = fly ? std::optional(fly(log)) : std::nullopt;
    const auto marked = trial ? markedOf(*trial) : std::vector<std::size_t>();
    auto flight = plotFlight(log, name, startOf(file), columns, marked);
    if (trial) {
        const auto script = fs::path(*options.script).filename().string();
        flight.trial = plotTrial(*trial, log, flight.samples, script);
    }
    flight.grades = plotGrades(log, tolerances);
    tellFaults(context, file, log, flight);
    return flight;
}

std::vector<PlotFlight> flightsOf(const CommandContext& context, const PlotOptions& options) {
    const auto tolerances =
        options.tolerances ? usableTolerances(context, *options.tolerances) : std::vector<Tolerance>();
    std::vector<PlotFlight> flights;
    const auto readAll = [&](const ScriptFlight& fly) {
        for (const auto& file : options.files)
            flights.push_back(flightOf(context, options, file, fly, tolerances));
    };
    if (!options.script) {
        readAll({});
        return flights;
    }
    const auto text = readScript(*options.script, std::cin);
    for (const auto& warning : scriptWarnings(text, *options.script))
        context.remark(warning);
    const auto script = parseScript(text, *options.script);
    withScript(
        script, options.navigationDatabase, [&](const std::string& said) { context.remark(said); }, readAll);
    return flights;
}

/// Whoever mixes the names up loses nothing.
void refuseToReplace(const PlotOptions& options) {
    for (const auto& file : options.files) {
        std::error_code none;
        if (fs::equivalent(file, *options.output, none)) {
            throw UsageError(printable(file.string()) + " is a recording to draw, and no place for the plot");
        }
    }
    std::error_code none;
    if (options.script && fs::equivalent(*options.script, *options.output, none))
        throw UsageError(printable(*options.script) + " is the script, and no place for the plot");
    if (options.tolerances && fs::equivalent(*options.tolerances, *options.output, none)) {
        throw UsageError(printable(options.tolerances->string()) +
                         " has the tolerances, and is no place for the plot");
    }
}

std::unique_ptr<TextSink> sinkFor(const CommandContext& context, const PlotOptions& options) {
    if (!options.output) return std::make_unique<StreamSink>(context.out);
    return std::make_unique<FileSink>(*options.output);
}

void plot(const CommandContext& context, const PlotOptions& options) {
    if (options.files.size() > mostFlights) {
        throw UsageError("at most " + std::to_string(mostFlights) + " recordings fit on one page");
    }
    if (options.navigationDatabase && !options.script)
        throw UsageError("--nav-db of plot is for the fixes of a script: name that by --script");
    if (options.output) refuseToReplace(options);
    const auto flights = flightsOf(context, options);
    const auto sink = sinkFor(context, options);
    sink->write(options.isPicture ? plotPicture(flights) : plotPage(flights));
    sink->finish();
}

} // namespace

void addPlotCommand(CLI::App& app, CommandContext& context) {
    auto* command =
        app.add_subcommand("plot", "Draw recordings, laid over each other, on a page for browsers");
    const auto options = std::make_shared<PlotOptions>();
    command->add_option("FILE", options->files, "The recordings, eight at most")->required();
    command
        ->add_option("-o,--output", options->output, "The file to write; the standard output when not given")
        ->type_name("FILE");
    command
        ->add_option("--script", options->script,
                     "A script, JSON: mark what it would have done; - for the standard input")
        ->type_name("FILE");
    command
        ->add_option("--nav-db", options->navigationDatabase,
                     "A navigation database in which to look for the fixes of the script")
        ->type_name("FILE");
    command
        ->add_option("--tolerances", options->tolerances,
                     "What is asked of the flights, JSON: grade them by it, with pictures")
        ->type_name("FILE");
    command->add_flag("--svg", options->isPicture, "Draw a picture that stands still instead");
    command->callback([&context, options] { plot(context, *options); });
}

} // namespace tarnly::track
