#include "TarnlyClient/Commands/CommandLine.hpp"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <exception>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/PasswordFile.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::client {
namespace {

constexpr int refused = 1;
constexpr int wrongUsage = 2;

std::string requireHost(const std::string& host) {
    return isHost(host) ? "" : "a host name or an address without brackets is wanted";
}

void addGlobalOptions(CLI::App& app, ClientOptions& options) {
    auto* instance = app.add_option("--instance", options.companion.instance,
                                    "The companion's name, where there are several");
    instance->type_name("NAME")->check(utf8Text());
    auto* host = app.add_option("--host", options.companion.host, "The companion's host name or address");
    host->type_name("HOST")->excludes(instance)->check(requireHost);
    auto* port = app.add_option("--port", options.companion.port, "The companion's port");
    port->type_name("PORT")->check(CLI::Range(1, 65535))->needs(host);
    host->needs(port);
    app.add_option("--password-file", options.passwordFile,
                   "A file with the pairing password on its first line")
        ->type_name("FILE");
    app.add_flag("--json", options.json, "Print one JSON object a line");
    addSeconds(app, "--timeout",
               "How long to look for companions and to wait for each answer, 10 when not given",
               [&](auto time) { options.companion.patience = time; });
    app.set_version_flag("--version", "tarnly-client " TARNLY_VERSION);
}

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

int complain(std::ostream& err, const std::string& text, int exitCode) {
    err << "tarnly-client: " << text << std::endl;
    return exitCode;
}

/// The parser takes its arguments last one first.
std::vector<std::string> parserArguments(const std::vector<std::string>& arguments) {
    std::vector<std::string> result;
    std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(result), parseableArgument);
    return result;
}

std::string describe(const CLI::App& app, const CLI::ParseError& error) {
    const auto strange = app.remaining();
    const bool isSubcommandWrong = app.get_subcommands().empty() && !strange.empty();
    if (isSubcommandWrong) return "\"" + strange.front() + "\" is not expected; --help lists the subcommands";
    return error.what();
}

int parseAndRun(CLI::App& app, const std::vector<std::string>& arguments, const CommandContext& context) {
    auto& out = context.stream;
    auto& err = context.errors;
    try {
        app.parse(parserArguments(arguments));
        return context.exitCode;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error, out, err);
        return complain(err, printable(describe(app, error)), wrongUsage);
    } catch (const UsageError& error) {
        return complain(err, oneLine(error.what()), wrongUsage);
    } catch (const ConnectionLost& error) {
        return complain(err, error.what() + std::string("; tarnly-client doctor tells what is in the way"),
                        refused);
    } catch (const std::exception& error) {
        return complain(err, error.what(), refused);
    }
}

} // namespace

CompanionSession::Options CommandContext::sessionOptions() const {
    CompanionSession::Options result{{}, options.companion.patience};
    if (options.passwordFile) result.password = readPassword(*options.passwordFile);
    return result;
}

void CommandContext::inSession(const SessionWork& work) const {
    auto session = sessionOptions();
    const auto place = locateCompanion(options.companion);
    holdSession(place.endpoint, std::move(session), work);
}

int runClient(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    CommandContext context{{}, out, err};
    CLI::App app("Talks with a companion as the training application does.", "tarnly-client");
    app.require_subcommand(1)->fallthrough();
    addGlobalOptions(app, context.options);
    addCompanionCommands(app, context);
    addStatusCommand(app, context);
    addDoctorCommand(app, context);
    addDatarefCommands(app, context);
    addWatchCommand(app, context);
    addControlCommands(app, context);
    addFlightCommands(app, context);
    addScriptCommand(app, context);
    addLessonCommand(app, context);
    addRecordingCommands(app, context);
    addSendCommand(app, context);
    return parseAndRun(app, arguments, context);
}

} // namespace tarnly::client
