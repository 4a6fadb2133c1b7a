#pragma once

#include <CLI/App.hpp>
#include <ostream>
#include <string>

#include "TarnlyClient/Companion/ClientOptions.hpp"
#include "TarnlyClient/Output/Printer.hpp"

namespace tarnly::client {

/// What the subcommands work with; `options` are known when a subcommand runs. Outlives the parser.
struct CommandContext {
    ClientOptions options;
    std::ostream& stream;
    std::ostream& errors;

    Printer printer() const { return {stream, options.json}; }
    /// For what is worth knowing and no reason to give up.
    void remark(const std::string& text) const { errors << "tarnly-client: " << text << std::endl; }
};

// Each declares its subcommands, whose callbacks do the work: they block until it is done, and throw
// `UsageError` and `ClientError`.

/// discover
void addDiscoverCommand(CLI::App& app, CommandContext& context);
/// info
void addInfoCommand(CLI::App& app, CommandContext& context);
/// get, set
void addDatarefCommands(CLI::App& app, CommandContext& context);
/// flights, load
void addFlightCommands(CLI::App& app, CommandContext& context);
/// script
void addScriptCommand(CLI::App& app, CommandContext& context);
/// record, catch-up
void addRecordingCommands(CLI::App& app, CommandContext& context);
/// watch
void addWatchCommand(CLI::App& app, CommandContext& context);
/// run, move, attitude
void addControlCommands(CLI::App& app, CommandContext& context);
/// send
void addSendCommand(CLI::App& app, CommandContext& context);

} // namespace tarnly::client
