#pragma once

#include <CLI/App.hpp>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "TarnlyClient/Companion/CompanionFinder.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"
#include "TarnlyClient/Output/Printer.hpp"

namespace tarnly::client {

/// Does what the command line asks for. `arguments` are those after the program's name. Returns the exit
/// code: 0 done, 1 the companion or the network refused, 2 wrong usage; the latter two with a text on `err`.
/// 1 as well where faults were looked for and found.
int runClient(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

/// What holds for every subcommand.
struct ClientOptions {
    /// Its patience is also how long to wait for each answer.
    CompanionSearch companion;
    std::optional<std::filesystem::path> passwordFile;
    /// One JSON object a line instead of text for people.
    bool json = false;
};

/// What the subcommands work with; `options` are known when a subcommand runs. Outlives the parser.
struct CommandContext {
    ClientOptions options;
    std::ostream& stream;
    std::ostream& errors;
    /// Of a subcommand that throws nothing.
    int exitCode = 0;

    Printer printer() const { return {stream, options.json}; }

    /// For what is worth knowing and no reason to give up.
    void remark(const std::string& text) const { errors << "tarnly-client: " << text << std::endl; }

    /// Throws `UsageError` for a password file that is no good.
    CompanionSession::Options sessionOptions() const;

    /// Finds the companion and does `work` in a session with it. Blocks until that is done; throws what
    /// `work` threw, `UsageError` for a password file that is no good and `ClientError` where there is no
    /// companion.
    void inSession(const SessionWork& work) const;
};

// Each declares its subcommands, whose callbacks do the work: they block until it is done, and throw
// `UsageError` and `ClientError`.

/// discover, info
void addCompanionCommands(CLI::App& app, CommandContext& context);
/// status
void addStatusCommand(CLI::App& app, CommandContext& context);
/// doctor
void addDoctorCommand(CLI::App& app, CommandContext& context);
/// send
void addSendCommand(CLI::App& app, CommandContext& context);
/// get, set
void addDatarefCommands(CLI::App& app, CommandContext& context);
/// run, move, attitude
void addControlCommands(CLI::App& app, CommandContext& context);
/// flights, load
void addFlightCommands(CLI::App& app, CommandContext& context);
/// script
void addScriptCommand(CLI::App& app, CommandContext& context);
/// record, catch-up
void addRecordingCommands(CLI::App& app, CommandContext& context);
/// lesson
void addLessonCommand(CLI::App& app, CommandContext& context);
/// watch
void addWatchCommand(CLI::App& app, CommandContext& context);

} // namespace tarnly::client
