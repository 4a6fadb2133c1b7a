#include "TarnlyApp/DaemonOptions.hpp"

#include <CLI/CLI.hpp>

namespace tarnly {
namespace {

constexpr int wrongUsage = 2;

/// CLI11's messages can have several lines.
std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

std::string requireName(const std::string& name) { return name.empty() ? "a name cannot be empty" : ""; }

std::string requireHost(const std::string& host) {
    return isHost(host) ? "" : "a host name or an address without brackets is wanted";
}

} // namespace

std::variant<DaemonOptions, EarlyExit> parseDaemonOptions(int argc, const char* const* argv) {
    DaemonOptions options;
    bool staysHidden = false;
    CLI::App app("Connects the X-Plane flight simulator to a flight-training application on the network.",
                 "tarnlyd");
    app.set_version_flag("--version", "tarnlyd " TARNLY_VERSION);
    app.add_option("--sim-host", options.simulator.host, "The simulator's host")
        ->type_name("HOST")
        ->capture_default_str()
        ->check(requireHost);
    app.add_option("--sim-port", options.simulator.port, "The port of the simulator's web API")
        ->type_name("PORT")
        ->capture_default_str()
        ->check(CLI::Range(1, 65535));
    app.add_option("--port", options.port, "The port to listen on; 0 lets the system choose")
        ->type_name("PORT")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    app.add_option("--name", options.name, "The name to be found by; without it the computer's host name")
        ->type_name("NAME")
        ->check(requireName);
    app.add_option("--data-dir", options.dataFolder, "The folder of settings.json and of the recordings")
        ->type_name("DIR");
    app.add_option("--nav-db", options.navigationDatabase,
                   "The navigation database with the fixes of scripts")
        ->type_name("FILE");
    app.add_option("--situations", options.situationsFolder, "The folder of the simulator's saved situations")
        ->type_name("DIR");
    app.add_flag("--no-advertise", staysHidden, "Listen without publishing by DNS-SD");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return EarlyExit{app.help(), 0};
    } catch (const CLI::CallForVersion&) {
        return EarlyExit{app.version() + "\n", 0};
    } catch (const CLI::ParseError& error) {
        return EarlyExit{"tarnlyd: " + firstLine(error.what()) + "\n", wrongUsage};
    }
    options.advertises = !staysHidden;
    return options;
}

} // namespace tarnly
