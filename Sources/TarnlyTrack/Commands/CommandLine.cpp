#include "TarnlyTrack/Commands/CommandLine.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <array>
#include <exception>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Output/Progress.hpp"

namespace tarnly::track {
namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

/// In the order of the help.
constexpr std::array subcommands{addListCommand, addShowCommand,  addExportCommand,
                                 addPlotCommand, addGradeCommand, addReplayCommand};

std::string describe(const CLI::App& app, const CLI::ParseError& error) {
    const auto strange = app.remaining();
    const bool isSubcommandWrong = app.get_subcommands().empty() && !strange.empty();
    if (isSubcommandWrong) return "\"" + strange.front() + "\" is not expected; --help lists the subcommands";
    return error.what();
}

int parseAndRun(CLI::App& app, const std::vector<std::string>& arguments, const CommandContext& context) {
    const auto complain = [&context](const std::string& text, int exitCode) {
        context.remark(text);
        return exitCode;
    };
    try {
        app.parse(std::vector(arguments.rbegin(), arguments.rend())); // it takes them last one first
        context.out.flush();
        if (!context.out) return complain("not everything could be written", failed);
        return context.exitCode;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error, context.out, context.err);
        return complain(printable(describe(app, error)), wrongUsage);
    } catch (const UsageError& error) {
        return complain(error.what(), wrongUsage);
    } catch (const std::exception& error) {
        return complain(error.what(), failed);
    }
}

} // namespace

void CommandContext::remark(const std::string& text) const { err << "tarnly-track: " << text << std::endl; }

FlightLog CommandContext::read(const std::filesystem::path& file) const {
    Progress progress(err, isWatched);
    const auto what = "reading " + printable(file.filename().string());
    return readFlightLog(file, [&](std::size_t done, std::size_t size) { progress.show(what, done, size); });
}

int runTrack(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
             bool isWatched) {
    CommandContext context{out, err, isWatched};
    CLI::App app("Looks at recordings of flights, and makes other files of them.", "tarnly-track");
    app.require_subcommand(1);
    app.set_version_flag("--version", "tarnly-track " TARNLY_VERSION);
    for (const auto add : subcommands)
        add(app, context);
    return parseAndRun(app, arguments, context);
}

} // namespace tarnly::track
