#include <memory>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyClient/Companion/CompanionFinder.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"

namespace tarnly::client {
namespace {

void discover(const CommandContext& context) {
    if (context.options.companion.host || context.options.companion.instance) {
        throw UsageError("discover looks for all companions: it takes neither --host nor --instance");
    }
    const auto found = findCompanions(context.options.companion.patience);
    if (found.empty())
        throw ClientError(
            "no companion found: is it running on this network? Ask tarnly-client doctor there");
    auto printer = context.printer();
    for (const auto& service : found)
        printer.companion(service);
}

Task<> showSimulator(CompanionSession& session, Printer printer) {
    co_await session.pair();
    auto data = co_await session.request(MessageType::simInfo);
    const auto info = decodeAnswer<SimInfo>(data);
    printer.simulator(info.sim, info.version);
}

Task<> sendRequest(CompanionSession& session, RawRequest request, Printer printer) {
    co_await session.pair();
    auto reply = co_await session.exchange(std::move(request.text), request.reqId);
    if (reply.isError()) throw ClientError(errorMessage(reply));
    printer.line(reply.text);
}

void runSend(const CommandContext& context, const std::string& text) {
    const auto request = rawRequest(text);
    context.inSession(
        [&](CompanionSession& session) { return sendRequest(session, request, context.printer()); });
}

void addDiscover(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("discover", "List the companions on the network");
    command->callback([&context] { discover(context); });
}

void addInfo(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("info", "Show which simulator the companion is connected with");
    command->callback([&context] {
        context.inSession(
            [&](CompanionSession& session) { return showSimulator(session, context.printer()); });
    });
}

} // namespace

void addCompanionCommands(CLI::App& app, CommandContext& context) {
    addDiscover(app, context);
    addInfo(app, context);
}

void addSendCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("send", "Send a request as it is, and print the answer");
    const auto text = std::make_shared<std::string>();
    command->add_option("JSON", *text, R"(The request, for example {"type":"sim_info"})")
        ->required()
        ->check(utf8Text());
    command->callback([&context, text] { runSend(context, *text); });
}

} // namespace tarnly::client
