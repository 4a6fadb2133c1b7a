#include <memory>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/Commands.hpp"
#include "TarnlyClient/Commands/FlightChoice.hpp"
#include "TarnlyClient/Companion/Conversation.hpp"

namespace tarnly::client {
namespace {

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

void addFlightCommands(CLI::App& app, CommandContext& context) {
    auto* flights = app.add_subcommand("flights", "List the saved flights");
    flights->callback([&context] {
        converse(context.options,
                 [&](CompanionSession& session) { return listFlights(session, context.printer()); });
    });

    auto* load = app.add_subcommand("load", "Load a saved flight");
    const auto flight = std::make_shared<std::string>();
    load->add_option("NAME-OR-PATH", *flight, "A flight, by its name or by its path")
        ->required()
        ->check(utf8Text());
    load->callback([&context, flight] {
        converse(context.options,
                 [&](CompanionSession& session) { return loadFlight(session, *flight, context.printer()); });
    });
}

} // namespace tarnly::client
