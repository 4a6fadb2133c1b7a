#pragma once

#include <CLI/App.hpp>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/UsageError.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {

/// Does what the command line asks for. `arguments` are those after the program's name; `isWatched` says that
/// `err` is a terminal. Returns the exit code: 0 done, 1 a file could not be read or written, 2 wrong usage,
/// these two with a text on `err`; 3 a graded flight does not meet all that was asked of it.
int runTrack(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err, bool isWatched);

/// What the subcommands work with. Outlives the parser.
struct CommandContext {
    std::ostream& out;
    std::ostream& err;
    bool isWatched = false;
    /// Of a subcommand that throws nothing.
    int exitCode = 0;

    /// For what is worth knowing and no reason to give up. `text` is one that a terminal may be given.
    void remark(const std::string& text) const;

    /// Reads a recording, and tells the terminal how far that is. Throws `TrackError`.
    FlightLog read(const std::filesystem::path& file) const;
};

// Each declares its subcommand, whose callback does the work, and throws `UsageError` and `TrackError`.

void addListCommand(CLI::App& app, CommandContext& context);
void addShowCommand(CLI::App& app, CommandContext& context);
void addPlotCommand(CLI::App& app, CommandContext& context);
void addExportCommand(CLI::App& app, CommandContext& context);
void addReplayCommand(CLI::App& app, CommandContext& context);
void addGradeCommand(CLI::App& app, CommandContext& context);

} // namespace tarnly::track
