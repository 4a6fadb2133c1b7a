#include <memory>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Companion/CatchUp.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"

namespace tarnly::client {
namespace {

Task<> startOrStop(CompanionSession& session, std::string_view type, Printer printer) {
    co_await session.pair();
    auto data = co_await session.request(type);
    decodeAnswer<OkPayload>(data);
    printer.ok();
}

Task<> showRecorded(CompanionSession& session, CatchUpRequest params, Printer printer) {
    co_await session.pair();
    auto data = co_await session.request(MessageType::catchUp, std::move(params));
    const auto recorded = decodeAnswer<RecordedFlight>(data);
    for (const auto& line : linesInLogOrder(recorded))
        printer.recorded(line);
}

void addRecord(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("record", "Start or stop the recording of the flight");
    const auto action = std::make_shared<std::string>();
    command->add_option("ACTION", *action, "start or stop")
        ->required()
        ->check(CLI::IsMember({"start", "stop"}));
    command->callback([&context, action] {
        const auto type = *action == "start" ? MessageType::recordingStart : MessageType::recordingStop;
        context.inSession(
            [&](CompanionSession& session) { return startOrStop(session, type, context.printer()); });
    });
}

void addCatchUp(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("catch-up", "Show what has been recorded");
    const auto params = std::make_shared<CatchUpRequest>();
    addNumber(*command, "--since", params->sinceElapsedSeconds, "Only what lies after this time, in seconds");
    command->callback([&context, params] {
        context.inSession(
            [&](CompanionSession& session) { return showRecorded(session, *params, context.printer()); });
    });
}

} // namespace

void addRecordingCommands(CLI::App& app, CommandContext& context) {
    addRecord(app, context);
    addCatchUp(app, context);
}

} // namespace tarnly::client
