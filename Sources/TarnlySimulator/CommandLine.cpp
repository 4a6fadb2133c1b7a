#include "TarnlySimulator/CommandLine.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace tarnly::simulator {
namespace {

constexpr auto introduction =
    "Stands in for the flight simulator: a small aircraft flies circuits over invented hills, and its web "
    "interface "
    "shows and moves it on this computer alone (127.0.0.1). Start it, then start the companion.\n";

constexpr auto farewell =
    "\nOrders while it runs, one a line on standard input with --control stdin, or each by\n"
    "curl -d '{\"order\":\"silent on\"}' http://127.0.0.1:8086/control\n\n"
    "  QUIRK on [MILLISECONDS] | QUIRK off   each of the quirks, also duration-required\n"
    "  drop                                  hang up on every WebSocket\n"
    "  restart [swapped] [fresh] [away MILLISECONDS]\n"
    "                                        reset all connections, draw other ids; swapped: exchange\n"
    "                                        those of landing gear up and down instead; fresh: begin the\n"
    "                                        flight anew; away: nobody listens for so long\n"
    "  aircraft [MILLISECONDS]               another one, whose add-ons come so late (3000)\n"
    "  load [SITUATION]                      leave the main menu, and fly\n\n"
    "Control-C ends it.\n";

/// Durations and optional values as plain numbers.
struct Numbers {
    std::uint64_t idSeed = 0;
    double lateDatarefsS = 0;
    double dropS = 0;
    bool noDuration = false;
};

std::string phaseNames() {
    std::string out;
    for (const FlightPhase phase : allFlightPhases)
        out += (out.empty() ? "" : ", ") + std::string(name(phase));
    return out;
}

std::string notNegative(const std::string& text) {
    return text.starts_with('-') ? text + " is negative" : std::string();
}

/// A range alone lets "nan" through.
std::string finite(const std::string& text) {
    double number = 0;
    const bool isNumber = std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
    return isNumber && std::isfinite(number) ? std::string() : text + " is no number";
}

void addConnection(CLI::App& app, SimulatorOptions& options) {
    const auto add = [&](const char* name, std::uint16_t& port, const char* help) {
        app.add_option(name, port, help)
            ->check(CLI::Range(0, 65535))
            ->option_text("PORT")
            ->group("Connection");
    };
    add("--port", options.port,
        "Port of the web interface, HTTP and WebSocket (default: 8086; 0: any free one)");
    add("--udp-port", options.udpPort, "UDP port for loading situations (default: 49000; 0: any free one)");
    const auto stdinOnly = [&options](const std::string&) { options.takesOrders = true; };
    app.add_option_function<std::string>("--control", stdinOnly, "Take orders there: stdin")
        ->check(CLI::IsMember({"stdin"}))
        ->option_text("WHERE")
        ->group("Connection");
}

void setStart(const std::string& text, SimulatorOptions& options) {
    const auto phase = flightPhaseNamed(text);
    if (!phase) throw CLI::ValidationError("--start", text + " is none of " + phaseNames());
    options.start = *phase;
}

void addFlight(CLI::App& app, SimulatorOptions& options) {
    const auto start = [&options](const std::string& text) { setStart(text, options); };
    app.add_option_function<std::string>("--start", start,
                                         "Where the flight begins: " + phaseNames() + " (default: runway)")
        ->option_text("PHASE")
        ->group("Flight");
    app.add_option("--speed", options.speed, "Simulated seconds in one second, 0.01 to 1000 (default: 1)")
        ->check(finite)
        ->check(CLI::Range(0.01, 1000.0))
        ->option_text("FACTOR")
        ->group("Flight");
    app.add_option("--seed", options.seed, "Another number, another route over the hills (default: 1)")
        ->check(notNegative)
        ->option_text("N")
        ->group("Flight");
}

void addCatalogue(CLI::App& app, SimulatorOptions& options, Numbers& numbers) {
    const auto size = CLI::Range(0, 2'000'000);
    app.add_option("--datarefs", options.datarefs, "Fill the dataref catalogue up to N entries")
        ->check(size)
        ->option_text("N")
        ->group("Catalogue");
    app.add_option("--commands", options.commands, "Fill the command list up to N entries")
        ->check(size)
        ->option_text("N")
        ->group("Catalogue");
    app.add_option("--id-seed", numbers.idSeed, "The same ids in every run (default: others each time)")
        ->check(notNegative)
        ->option_text("N")
        ->group("Catalogue");
    app.add_flag("--lever-lists", options.leverLists,
                 "Levers of all engines are lists, not one number as the real simulator has them")
        ->group("Catalogue");
    app.add_flag("--no-flap-ratio", options.noFlapRatio,
                 "sim/cockpit2/controls/flap_ratio is missing, flap_handle_request_ratio is not")
        ->group("Catalogue");
    app.add_option("--sim-version", options.version, "The simulator's version (default: 12.4.0)")
        ->option_text("VERSION")
        ->group("Catalogue");
}

void addQuirk(CLI::App& app, const QuirkSwitch& quirk, Quirks& quirks) {
    const std::string name = quirk.name;
    if (name == "duration-required" || name == "late-datarefs") return; // with options of their own
    if (quirk.time == nullptr) {
        app.add_flag("--" + name, quirks.*quirk.on, quirk.meaning)->group("Quirks");
        return;
    }
    const auto set = [&quirks, &quirk](std::int64_t number) {
        quirks.*quirk.on = true;
        quirks.*quirk.time = std::chrono::milliseconds(number);
    };
    app.add_option_function<std::int64_t>("--" + name, set, quirk.meaning)
        ->check(CLI::Range(0, 600'000))
        ->option_text("MILLISECONDS")
        ->group("Quirks");
}

void addQuirks(CLI::App& app, Quirks& quirks, Numbers& numbers) {
    for (const QuirkSwitch& quirk : quirkSwitches())
        addQuirk(app, quirk, quirks);
    app.add_flag("--no-duration", numbers.noDuration,
                 "Commands can be activated without a duration (the real simulator refuses that)")
        ->group("Quirks");
    app.add_option("--late-datarefs", numbers.lateDatarefsS,
                   "Add-ons register their datarefs after so many seconds")
        ->check(finite)
        ->check(CLI::Range(0.0, 1e6))
        ->option_text("SECONDS")
        ->group("Quirks");
    app.add_option("--drop", numbers.dropS, "Hang up on every WebSocket after so many seconds")
        ->check(finite)
        ->check(CLI::Range(0.0, 1e6))
        ->option_text("SECONDS")
        ->group("Quirks");
}

std::chrono::milliseconds milliseconds(double seconds) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

void takeOver(const CLI::App& app, const Numbers& numbers, SimulatorOptions& options) {
    if (app.count("--id-seed") > 0) options.idSeed = numbers.idSeed;
    if (app.count("--late-datarefs") > 0) options.lateDatarefsAfter = milliseconds(numbers.lateDatarefsS);
    if (app.count("--drop") > 0) options.dropAfter = milliseconds(numbers.dropS);
    options.quirks.durationRequired = !numbers.noDuration;
}

EarlyEnd complaint(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    return {2, "tarnly-sim: " + text + " (tarnly-sim --help lists the options)\n"};
}

} // namespace

std::variant<SimulatorOptions, EarlyEnd> parseCommandLine(std::vector<std::string> arguments) {
    SimulatorOptions options;
    Numbers numbers;
    CLI::App app(introduction, "tarnly-sim");
    app.set_version_flag("--version", "tarnly-sim " TARNLY_VERSION);
    app.footer(farewell);
    app.get_formatter()->column_width(30);
    addConnection(app, options);
    addFlight(app, options);
    addCatalogue(app, options, numbers);
    addQuirks(app, options.quirks, numbers);
    std::ranges::reverse(arguments); // the parser takes them from the back
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::CallForVersion& version) {
        return EarlyEnd{0, version.what() + std::string("\n")};
    } catch (const CLI::CallForHelp&) {
        return EarlyEnd{0, app.help()};
    } catch (const CLI::ParseError& error) {
        return complaint(error.what());
    }
    takeOver(app, numbers, options);
    return options;
}

} // namespace tarnly::simulator
