#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Companion/ScriptedCompanion.hpp"

namespace tarnly::test {

struct ClientRun {
    int exitCode;
    std::string out;
    std::string err;
};

/// Calls the tool as from a command line.
inline ClientRun run(const std::vector<std::string>& arguments) {
    std::ostringstream out;
    std::ostringstream err;
    const int exitCode = client::runClient(arguments, out, err);
    return {exitCode, out.str(), err.str()};
}

/// The same, pointed at `companion`.
inline ClientRun run(const ScriptedCompanion& companion, std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--host", "127.0.0.1", "--port", std::to_string(companion.port())});
    return run(arguments);
}

/// A companion whose answer to every request but pairing has `data`.
inline ScriptedCompanion::Script answering(const std::string& data) {
    return paired([data](const boost::json::object& request) {
        return std::vector{ScriptedCompanion::reply(request, data)};
    });
}

/// What arrives after pairing when the tool is called with `arguments`, and its own report of success.
inline std::string requestOf(const std::vector<std::string>& arguments,
                             const std::string& data = R"({"ok":true})") {
    const ScriptedCompanion companion(answering(data));
    const auto outcome = run(companion, arguments);
    if (outcome.exitCode != 0) return outcome.err;
    const auto received = companion.received();
    return received.size() == 2 ? received[1] : "not one request";
}

} // namespace tarnly::test
