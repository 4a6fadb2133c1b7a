#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"

namespace tarnly::client {
namespace {

/// Knots: beyond every aircraft, and short of numbers that were meant for something else.
constexpr double fastest = 2000;

using Texts = std::shared_ptr<std::vector<std::string>>;

Task<> getValues(CompanionSession& session, std::vector<std::string> names, Printer printer) {
    co_await session.pair();
    auto params = namesParams(names);
    auto data = co_await session.request(MessageType::datarefSubscribeValues, std::move(params));
    const auto values = decodeAnswer<Values>(data);
    printer.values(names, values);
}

template <typename Params>
Task<> doAndSayOk(CompanionSession& session, std::string_view type, Params params, Printer printer) {
    co_await session.pair();
    auto data = co_await session.request(type, std::move(params));
    decodeAnswer<OkPayload>(data);
    printer.ok();
}

void runGet(const CommandContext& context, const std::vector<std::string>& names) {
    context.inSession(
        [&](CompanionSession& session) { return getValues(session, names, context.printer()); });
}

void runSet(const CommandContext& context, const std::vector<std::string>& assignments) {
    DatarefSetParams params;
    for (const auto& assignment : assignments)
        params.datarefs.push_back(parseAssignment(assignment));
    context.inSession([&](CompanionSession& session) {
        return doAndSayOk(session, MessageType::datarefSetValues, params, context.printer());
    });
}

/// The callback of a subcommand that sends `params`, once these are parsed.
template <typename Params>
std::function<void()> sender(const CommandContext& context, std::string_view type,
                             const std::shared_ptr<Params>& params) {
    return [&context, type, params] {
        context.inSession(
            [&](CompanionSession& session) { return doAndSayOk(session, type, *params, context.printer()); });
    };
}

void addRun(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("run", "Trigger a simulator command once");
    const auto params = std::make_shared<RunCommandRequest>();
    command->add_option("COMMAND", params->name, "The command's name")->required()->check(simulatorName());
    command->callback(sender(context, MessageType::runCommand, params));
}

void addMove(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("move", "Move the aircraft, at its height above ground");
    const auto params = std::make_shared<MoveToPreservingAglRequest>();
    addNumber(*command, "LAT", params->lat, "Latitude in degrees")
        ->required()
        ->check(numberFrom(-90, 90, "degrees"));
    addNumber(*command, "LON", params->lon, "Longitude in degrees")
        ->required()
        ->check(numberFrom(-180, 180, "degrees"));
    command->callback(sender(context, MessageType::moveToPreservingAgl, params));
}

void addAttitude(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("attitude", "Put the aircraft into an attitude and airspeed");
    const auto params = std::make_shared<ApplyAttitudeRequest>();
    addNumber(*command, "PITCH", params->pitchDeg, "Degrees, nose up")
        ->required()
        ->check(numberFrom(-90, 90, "degrees"));
    addNumber(*command, "BANK", params->bankDeg, "Degrees, right wing down")
        ->required()
        ->check(numberFrom(-180, 180, "degrees"));
    addNumber(*command, "IAS", params->iasKts, "Indicated airspeed in knots")
        ->required()
        ->check(numberFrom(0, fastest, "knots"));
    addNumber(*command, "THROTTLE", params->throttle, "Ratio, 0 to 1")
        ->required()
        ->check(numberFrom(0, 1, "ratios"));
    command->callback(sender(context, MessageType::applyAttitude, params));
}

Task<std::vector<FlightListing>> askForFlights(CompanionSession& session) {
    auto data = co_await session.request(MessageType::listFlights);
    co_return decodeAnswer<FlightsPayload>(data).flights;
}

Task<> listFlights(CompanionSession& session, Printer printer) {
    co_await session.pair();
    const auto flights = co_await askForFlights(session);
    for (const auto& flight : flights)
        printer.flight(flight);
}

Task<> loadFlight(CompanionSession& session, std::string nameOrPath, Printer printer) {
    co_await session.pair();
    LoadFlightRequest params{nameOrPath};
    if (!isFlightPath(nameOrPath)) {
        const auto flights = co_await askForFlights(session);
        params.path = pathOfFlight(flights, nameOrPath);
    }
    auto data = co_await session.request(MessageType::loadFlight, std::move(params));
    decodeAnswer<OkPayload>(data);
    printer.ok();
}

} // namespace

void addDatarefCommands(CLI::App& app, CommandContext& context) {
    auto* get = app.add_subcommand("get", "Print the present values of datarefs");
    const Texts names = std::make_shared<std::vector<std::string>>();
    get->add_option("NAME", *names, "Datarefs")->required()->check(simulatorName());
    get->callback([&context, names] { runGet(context, *names); });

    auto* set = app.add_subcommand("set", "Write datarefs, or elements of array datarefs");
    const Texts assignments = std::make_shared<std::vector<std::string>>();
    set->add_option("ASSIGNMENT", *assignments,
                    "NAME=VALUE: a dataref and a number; NAME[2]=VALUE writes one element")
        ->required()
        ->check(utf8Text());
    set->callback([&context, assignments] { runSet(context, *assignments); });
}

void addControlCommands(CLI::App& app, CommandContext& context) {
    addRun(app, context);
    addMove(app, context);
    addAttitude(app, context);
}

void addFlightCommands(CLI::App& app, CommandContext& context) {
    auto* flights = app.add_subcommand("flights", "List the saved flights");
    flights->callback([&context] {
        context.inSession([&](CompanionSession& session) { return listFlights(session, context.printer()); });
    });

    auto* load = app.add_subcommand("load", "Load a saved flight");
    const auto flight = std::make_shared<std::string>();
    load->add_option("NAME-OR-PATH", *flight, "A flight, by its name or by its path")
        ->required()
        ->check(utf8Text());
    load->callback([&context, flight] {
        context.inSession(
            [&](CompanionSession& session) { return loadFlight(session, *flight, context.printer()); });
    });
}

} // namespace tarnly::client
