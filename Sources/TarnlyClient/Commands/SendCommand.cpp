#include <memory>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/Commands.hpp"
#include "TarnlyClient/Commands/RawRequest.hpp"
#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyClient/Companion/Conversation.hpp"

namespace tarnly::client {
namespace {

Task<> sendRequest(CompanionSession& session, RawRequest request, Printer printer) {
    co_await session.pair();
    auto reply = co_await session.exchange(std::move(request.text), request.reqId);
    if (reply.isError()) throw ClientError(errorMessage(reply));
    printer.line(reply.text);
}

void runSend(const CommandContext& context, const std::string& text) {
    const auto request = rawRequest(text);
    converse(context.options,
             [&](CompanionSession& session) { return sendRequest(session, request, context.printer()); });
}

} // namespace

void addSendCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("send", "Send a request as it is, and print the answer");
    const auto text = std::make_shared<std::string>();
    command->add_option("JSON", *text, R"(The request, for example {"type":"sim_info"})")
        ->required()
        ->check(utf8Text());
    command->callback([&context, text] { runSend(context, *text); });
}

} // namespace tarnly::client
