#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Log/LogName.hpp"
#include "TarnlyTrack/Output/Listing.hpp"
#include "TarnlyTrack/Output/TextSink.hpp"
#include "TarnlyTrack/Output/Words.hpp"
#include "TarnlyTrack/Plot/PlotPage.hpp"
#include "TarnlyTrack/Plot/PlotPicture.hpp"

/// plot: recordings as a page or a picture.
namespace tarnly::track {
namespace {

namespace fs = std::filesystem;

struct PlotOptions {
    std::vector<fs::path> files;
    std::optional<fs::path> output;
    bool isPicture = false;
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

std::vector<PlotFlight> flightsOf(const CommandContext& context, const PlotOptions& options) {
    const auto columns = options.isPicture ? pictureColumns : plotColumns(options.files.size());
    std::vector<PlotFlight> flights;
    for (const auto& file : options.files) {
        const auto log = context.read(file);
        flights.push_back(plotFlight(log, file.filename().string(), startOf(file), columns));
        tellFaults(context, file, log, flights.back());
    }
    return flights;
}

/// Whoever mixes the names up loses no recording.
void refuseToReplace(const PlotOptions& options) {
    for (const auto& file : options.files) {
        std::error_code none;
        if (fs::equivalent(file, *options.output, none)) {
            throw UsageError(printable(file.string()) + " is a recording to draw, and no place for the plot");
        }
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
    command->add_flag("--svg", options->isPicture, "Draw a picture that stands still instead");
    command->callback([&context, options] { plot(context, *options); });
}

} // namespace tarnly::track
