#include <memory>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/Commands.hpp"
#include "TarnlyClient/Commands/DatarefAssignment.hpp"
#include "TarnlyClient/Commands/DatarefRequests.hpp"
#include "TarnlyClient/Companion/Conversation.hpp"

namespace tarnly::client {
namespace {

using Texts = std::shared_ptr<std::vector<std::string>>;

Task<> getValues(CompanionSession& session, std::vector<std::string> names, Printer printer) {
    co_await session.pair();
    auto params = namesParams(names);
    auto data = co_await session.request(MessageType::datarefSubscribeValues, std::move(params));
    const auto values = decodeAnswer<Values>(data);
    printer.values(names, values);
}

Task<> setValues(CompanionSession& session, DatarefSetParams params, Printer printer) {
    co_await session.pair();
    auto data = co_await session.request(MessageType::datarefSetValues, std::move(params));
    decodeAnswer<OkPayload>(data);
    printer.ok();
}

void runGet(const CommandContext& context, const std::vector<std::string>& names) {
    converse(context.options,
             [&](CompanionSession& session) { return getValues(session, names, context.printer()); });
}

void runSet(const CommandContext& context, const std::vector<std::string>& assignments) {
    DatarefSetParams params;
    for (const auto& assignment : assignments)
        params.datarefs.push_back(parseAssignment(assignment));
    converse(context.options,
             [&](CompanionSession& session) { return setValues(session, params, context.printer()); });
}

} // namespace

void addDatarefCommands(CLI::App& app, CommandContext& context) {
    auto* get = app.add_subcommand("get", "Print the present values of datarefs");
    const Texts names = std::make_shared<std::vector<std::string>>();
    get->add_option("NAME", *names, "Datarefs")->required()->check(utf8Text());
    get->callback([&context, names] { runGet(context, *names); });

    auto* set = app.add_subcommand("set", "Write datarefs, or elements of array datarefs");
    const Texts assignments = std::make_shared<std::vector<std::string>>();
    set->add_option("NAME=VALUE", *assignments, "Datarefs with numbers; NAME[2]=VALUE writes one element")
        ->required()
        ->check(utf8Text());
    set->callback([&context, assignments] { runSet(context, *assignments); });
}

} // namespace tarnly::client
