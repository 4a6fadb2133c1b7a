#include <memory>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/Commands.hpp"
#include "TarnlyClient/Companion/Conversation.hpp"

namespace tarnly::client {
namespace {

template <typename Params>
Task<> doAndSayOk(CompanionSession& session, std::string_view type, Params params, Printer printer) {
    co_await session.pair();
    auto data = co_await session.request(type, std::move(params));
    decodeAnswer<OkPayload>(data);
    printer.ok();
}

/// The callback of a subcommand that sends `params`, once these are parsed.
template <typename Params>
std::function<void()> sender(const CommandContext& context, std::string_view type,
                             const std::shared_ptr<Params>& params) {
    return [&context, type, params] {
        converse(context.options, [&](CompanionSession& session) {
            return doAndSayOk(session, type, *params, context.printer());
        });
    };
}

void addRun(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("run", "Trigger a simulator command once");
    const auto params = std::make_shared<RunCommandRequest>();
    command->add_option("COMMAND", params->name, "The command's name")->required()->check(utf8Text());
    command->callback(sender(context, MessageType::runCommand, params));
}

void addMove(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("move", "Move the aircraft, at its height above ground");
    const auto params = std::make_shared<MoveToPreservingAglRequest>();
    addNumber(*command, "LAT", params->lat, "Latitude in degrees")->required();
    addNumber(*command, "LON", params->lon, "Longitude in degrees")->required();
    command->callback(sender(context, MessageType::moveToPreservingAgl, params));
}

void addAttitude(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("attitude", "Put the aircraft into an attitude and airspeed");
    const auto params = std::make_shared<ApplyAttitudeRequest>();
    addNumber(*command, "PITCH", params->pitchDeg, "Degrees, nose up")->required();
    addNumber(*command, "BANK", params->bankDeg, "Degrees, right wing down")->required();
    addNumber(*command, "IAS", params->iasKts, "Indicated airspeed in knots")->required();
    addNumber(*command, "THROTTLE", params->throttle, "Ratio, 0 to 1")->required();
    command->callback(sender(context, MessageType::applyAttitude, params));
}

} // namespace

void addControlCommands(CLI::App& app, CommandContext& context) {
    addRun(app, context);
    addMove(app, context);
    addAttitude(app, context);
}

} // namespace tarnly::client
