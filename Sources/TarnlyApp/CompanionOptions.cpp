#include "TarnlyApp/CompanionOptions.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"

namespace tarnly {
namespace {

constexpr int wrongUsage = 2;

/// CLI11's messages can have several lines.
std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

std::string requireName(const std::string& name) { return name.empty() ? "a name cannot be empty" : ""; }

/// People copy it from a browser, which shows a slash behind it.
std::optional<WebOrigin> parseOrigin(const std::string& text) {
    return WebOrigin::parse(std::string_view(text).substr(0, text.size() - (text.ends_with('/') ? 1 : 0)));
}

std::string requireHost(const std::string& host) {
    return isHost(host) ? "" : "a host name or an address without brackets is wanted";
}

std::string requireOrigin(const std::string& text) {
    return parseOrigin(text) ? "" : "an origin such as https://example.com is wanted, without a path";
}

std::string nameOf(CompanionProgram program) {
    return program == CompanionProgram::tarnly ? "tarnly" : "tarnlyd";
}

std::string absoluteText(const std::filesystem::path& path) {
    return std::filesystem::absolute(path).string();
}

/// However the path is spelt: bash completes it with a slash.
std::filesystem::path plain(const std::filesystem::path& folder) {
    auto path = std::filesystem::absolute(folder).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

/// "tarnly", or "tarnly-home-pilot-rig" for the settings in /home/pilot/rig.
std::string entryId(const CompanionOptions& options) {
    if (!options.dataFolder || plain(*options.dataFolder) == plain(applicationDataFolder())) return "tarnly";
    auto folder = plain(*options.dataFolder).string();
    std::ranges::replace_if(
        folder, [](unsigned char letter) { return std::isalnum(letter) == 0; }, '-');
    return "tarnly" + folder;
}

} // namespace

std::variant<CompanionOptions, EarlyExit> parseOptions(CompanionProgram program, int argc,
                                                       const char* const* argv) {
    const bool isDesktop = program == CompanionProgram::tarnly;
    const auto name = nameOf(program);
    CompanionOptions options;
    bool staysHidden = false;
    CLI::App app("Connects the X-Plane flight simulator to a flight-training application on the network.",
                 name);
    app.set_version_flag("--version", name + " " TARNLY_VERSION);
    app.add_option("--sim-host", options.simulator.host, "The simulator's host")
        ->type_name("HOST")
        ->capture_default_str()
        ->check(requireHost);
    app.add_option("--sim-port", options.simulator.port, "The port of the simulator's web API")
        ->type_name("PORT")
        ->capture_default_str()
        ->check(CLI::Range(1, 65535));
    app.add_option(
           "--port", options.port,
           "The port to listen on; 0 lets the system choose; without it 28086, or the next one that is "
           "free")
        ->type_name("PORT")
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
    app.add_option("--status-file", options.statusFile, "Keep a file that tells how the companion stands")
        ->type_name("FILE");
    app.add_flag("--no-advertise", staysHidden, "Listen without publishing by DNS-SD");
    app.add_option("--max-clients", options.mostClients, "The most connections at once")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 65535));
    std::vector<std::string> origins;
    app.add_option("--allow-origin", origins,
                   "Let the web pages of one origin use the companion; may be given several times")
        ->type_name("URL")
        ->allow_extra_args(false)
        ->check(requireOrigin);
    if (isDesktop) {
        app.add_flag("--background", options.startsInBackground, "Start without opening a window");
    }
    app.add_flag("--status", options.asksForStatus,
                 "Print how the companion with this data folder stands, and exit");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return EarlyExit{app.help(), 0};
    } catch (const CLI::CallForVersion&) {
        return EarlyExit{app.version() + "\n", 0};
    } catch (const CLI::ParseError& error) {
        return EarlyExit{name + ": " + firstLine(error.what()) + "\n", wrongUsage};
    }
    options.advertises = !staysHidden;
    for (const auto& origin : origins)
        options.allowedOrigins.push_back(*parseOrigin(origin));
    return options;
}

std::variant<CompanionOptions, EarlyExit> prepareRun(CompanionProgram program, int argc,
                                                     const char* const* argv) {
    auto parsed = parseOptions(program, argc, argv);
    const auto* options = std::get_if<CompanionOptions>(&parsed);
    if (options == nullptr || !options->asksForStatus) return parsed;
    try {
        return EarlyExit{askForStatus(dataFolder(*options)) + "\n", 0};
    } catch (const std::exception& error) {
        return EarlyExit{nameOf(program) + ": " + error.what() + "\n", 1};
    }
}

std::vector<std::uint16_t> portsToTry(std::optional<std::uint16_t> wanted) {
    if (wanted) return {*wanted};
    std::vector<std::uint16_t> ports;
    for (auto port = UsualPorts::first; port <= UsualPorts::last; ++port)
        ports.push_back(port);
    ports.push_back(0);
    return ports;
}

std::filesystem::path dataFolder(const CompanionOptions& options) {
    return options.dataFolder ? *options.dataFolder : applicationDataFolder();
}

std::vector<std::string> commandLine(const CompanionOptions& options) {
    const CompanionOptions defaults;
    std::vector<std::string> arguments;
    const auto add = [&](const char* option, const std::string& value) {
        // In one word: a value may begin with a dash.
        arguments.push_back(std::string(option).append("=").append(value));
    };
    if (options.startsInBackground) arguments.emplace_back("--background");
    if (options.simulator.host != defaults.simulator.host) add("--sim-host", options.simulator.host);
    if (options.simulator.port != defaults.simulator.port) {
        add("--sim-port", std::to_string(options.simulator.port));
    }
    if (options.port) add("--port", std::to_string(*options.port));
    if (options.name) add("--name", *options.name);
    if (options.dataFolder) add("--data-dir", absoluteText(*options.dataFolder));
    if (options.navigationDatabase) add("--nav-db", absoluteText(*options.navigationDatabase));
    if (options.situationsFolder) add("--situations", absoluteText(*options.situationsFolder));
    if (options.statusFile) add("--status-file", absoluteText(*options.statusFile));
    if (options.mostClients != defaults.mostClients)
        add("--max-clients", std::to_string(options.mostClients));
    for (const auto& origin : options.allowedOrigins)
        add("--allow-origin", origin.text());
    if (!options.advertises) arguments.emplace_back("--no-advertise");
    return arguments;
}

std::unique_ptr<LoginItem> makeLoginItem(CompanionOptions options) {
    options.startsInBackground = true;
    LoginItem::Description description;
    description.id = entryId(options);
    description.name = "Tarnly";
    description.comment = "Connects the X-Plane flight simulator to a flight-training application";
    description.icon = "tarnly";
    description.command = commandLine(options);
    description.command.insert(description.command.begin(), programPath().string());
    return LoginItem::create(std::move(description));
}

} // namespace tarnly
