#include "TarnlyNavdb/CommandLine.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <exception>

#include "TarnlyCore/NavSource/NavSources.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::navdb {
namespace {

constexpr int notDone = 1;
constexpr int wrongUsage = 2;

int complain(const Streams& streams, const std::string& text, int exitCode) {
    streams.remark(printable(text));
    return exitCode;
}

int parseAndRun(CLI::App& app, std::vector<std::string> arguments, const Context& context) {
    std::ranges::reverse(arguments); // the parser takes the last one first
    try {
        app.parse(std::move(arguments));
        return context.exitCode;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error, context.streams.out, context.streams.err);
        return complain(context.streams, error.what(), wrongUsage);
    } catch (const UsageError& error) {
        return complain(context.streams, error.what(), wrongUsage);
    } catch (const NavSourceError& error) {
        return complain(context.streams, error.payload(), notDone);
    } catch (const std::exception& error) {
        return complain(context.streams, error.what(), notDone);
    }
}

} // namespace

int runNavdb(const std::vector<std::string>& arguments, const Streams& streams) {
    Context context{streams};
    CLI::App app("Makes the navigation database of the companion, and looks into it.", "tarnly-navdb");
    app.require_subcommand(1);
    app.set_version_flag("--version", "tarnly-navdb " TARNLY_VERSION);
    addBuildCommand(app, context);
    addFindCommand(app, context);
    return parseAndRun(app, arguments, context);
}

} // namespace tarnly::navdb
