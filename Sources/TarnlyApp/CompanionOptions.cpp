#include "TarnlyApp/CompanionOptions.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <chrono>
#include <utility>

#include "TarnlyApp/OptionPaths.hpp"
#include "TarnlyApp/SettingRules.hpp"
#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"

namespace tarnly {
namespace {

constexpr int wrongUsage = 2;

/// For the disks of the paths that are named: one that sleeps may take longer, and holds up the start no
/// more.
constexpr auto disksPatience = std::chrono::seconds(1);

/// CLI11's messages can have several lines.
std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

std::string requirePath(const std::string& path) { return path.empty() ? "a path cannot be empty" : ""; }

std::string nameOf(CompanionProgram program) {
    return program == CompanionProgram::tarnly ? "tarnly" : "tarnlyd";
}

/// However the path is spelt: bash completes it with a slash.
std::filesystem::path plain(const std::filesystem::path& folder) {
    auto path = std::filesystem::absolute(folder).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

/// Where it is another one than usual.
std::optional<std::string> ownDataFolder(const CompanionOptions& options) {
    if (!options.dataFolder || plain(*options.dataFolder) == plain(applicationDataFolder()))
        return std::nullopt;
    return plain(*options.dataFolder).string();
}

/// "tarnly", or "tarnly-home-pilot-rig" for the settings in /home/pilot/rig.
std::string entryId(const CompanionOptions& options) {
    auto folder = ownDataFolder(options).value_or("");
    std::ranges::replace_if(
        folder, [](unsigned char letter) { return std::isalnum(letter) == 0; }, '-');
    return "tarnly" + folder;
}

/// What is wrong, as the parser wants it.
auto inEnglish(Phrase (*fault)(const std::string&)) {
    return [fault](const std::string& text) { return fault(text).text(); };
}

} // namespace

std::variant<CompanionOptions, EarlyExit> parseOptions(CompanionProgram program, int argc,
                                                       const char* const* argv) {
    const bool isDesktop = program == CompanionProgram::tarnly;
    const auto name = nameOf(program);
    CompanionOptions options;
    bool advertises = false;
    bool staysHidden = false;
    CLI::App app("Connects the X-Plane flight simulator to a flight-training application on the network.",
                 name);
    app.set_version_flag("--version", name + " " TARNLY_VERSION);
    app.add_option("--sim-host", options.simulatorHost, "The simulator's host; without it 127.0.0.1")
        ->type_name("HOST")
        ->check(inEnglish(hostFault));
    app.add_option("--sim-port", options.simulatorPort,
                   "The port of the simulator's web API; without it 8086")
        ->type_name("PORT")
        ->check(CLI::Range(1, 65535));
    app.add_option(
           "--port", options.port,
           "The port to listen on; 0 lets the system choose; without it 28086, or the next one that is "
           "free")
        ->type_name("PORT")
        ->check(CLI::Range(0, 65535));
    app.add_option("--name", options.name, "The name to be found by; without it the computer's host name")
        ->type_name("NAME")
        ->check(inEnglish(nameFault));
    app.add_option("--data-dir", options.dataFolder, "The folder of settings.json and of the recordings")
        ->type_name("DIR")
        ->check(requirePath);
    app.add_option("--nav-db", options.navigationDatabase,
                   "The navigation database with the fixes of scripts")
        ->type_name("FILE")
        ->check(requirePath);
    app.add_option("--situations", options.situationsFolder, "The folder of the simulator's saved situations")
        ->type_name("DIR")
        ->check(requirePath);
    app.add_option("--status-file", options.statusFile, "Keep a file that tells how the companion stands")
        ->type_name("FILE")
        ->check(requirePath);
    auto* advertise = app.add_flag("--advertise", advertises, "Publish by DNS-SD, whatever the settings say");
    app.add_flag("--no-advertise", staysHidden, "Listen without publishing by DNS-SD")->excludes(advertise);
    app.add_option("--max-clients", options.mostClients, "The most connections at once")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 65535));
    std::vector<std::string> origins;
    app.add_option("--allow-origin", origins,
                   "Let the web pages of one origin use the companion; may be given several times")
        ->type_name("URL")
        ->allow_extra_args(false)
        ->check(inEnglish(originFault));
    app.add_flag("!--no-page", options.hasLessonPage,
                 "Show browsers a short page in place of the lesson page");
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
    if (advertises || staysHidden) options.advertises = advertises;
    for (const auto& origin : origins)
        options.allowedOrigins.push_back(*originFrom(origin));
    return options;
}

std::variant<CompanionOptions, EarlyExit> prepareRun(CompanionProgram program, int argc,
                                                     const char* const* argv) {
    auto parsed = parseOptions(program, argc, argv);
    const auto* options = std::get_if<CompanionOptions>(&parsed);
    if (options == nullptr) return parsed;
    if (!options->asksForStatus) {
        const auto problem = problemOfPaths(*options, disksPatience);
        if (problem) return EarlyExit{nameOf(program) + ": " + *problem + "\n", wrongUsage};
        return parsed;
    }
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

std::unique_ptr<LoginItem> makeLoginItem(const CompanionOptions& options) {
    LoginItem::Description description;
    description.id = entryId(options);
    description.name = "Tarnly";
    description.comment = "Connects the X-Plane flight simulator to a flight-training application";
    description.icon = "tarnly";
    description.command = {programPath().string(), "--background"};
    if (const auto folder = ownDataFolder(options))
        description.command.push_back("--data-dir=" + *folder); // one word: it may begin with a dash
    return LoginItem::create(std::move(description));
}

} // namespace tarnly
