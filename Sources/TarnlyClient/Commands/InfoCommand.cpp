#include "TarnlyClient/Commands/Commands.hpp"
#include "TarnlyClient/Companion/Conversation.hpp"

namespace tarnly::client {
namespace {

Task<> showSimulator(CompanionSession& session, Printer printer) {
    co_await session.pair();
    auto data = co_await session.request(MessageType::simInfo);
    const auto info = decodeAnswer<SimInfo>(data);
    printer.simulator(info.sim, info.version);
}

} // namespace

void addInfoCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("info", "Show which simulator the companion is connected with");
    command->callback([&context] {
        converse(context.options,
                 [&](CompanionSession& session) { return showSimulator(session, context.printer()); });
    });
}

} // namespace tarnly::client
