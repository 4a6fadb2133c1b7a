#pragma once

#include <CLI/App.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/UsageError.hpp"

namespace tarnly::navdb {

/// Where a command writes. The streams outlive it.
struct Streams {
    std::ostream& out;
    std::ostream& err;
    /// Whether what goes to `err` can be written over.
    bool isErrATerminal = false;

    void remark(const std::string& text) const { err << "tarnly-navdb: " << text << std::endl; }
};

/// What the subcommands work with. Outlives the parser.
struct Context {
    Streams streams;
    /// Of a subcommand that throws nothing.
    int exitCode = 0;
};

/// Does what the command line asks for. `arguments` are those after the program's name. Returns the exit
/// code: 0 done, 1 not done or nothing found, 2 wrong usage, each of the latter two with a text.
int runNavdb(const std::vector<std::string>& arguments, const Streams& streams);

// Each declares its subcommand, whose callback does the work and blocks until it is done.

/// build
void addBuildCommand(CLI::App& app, Context& context);
/// find
void addFindCommand(CLI::App& app, Context& context);

} // namespace tarnly::navdb
