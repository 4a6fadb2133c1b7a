#include <iostream>
#include <memory>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/Commands.hpp"
#include "TarnlyClient/Commands/ScriptFile.hpp"
#include "TarnlyClient/Companion/Conversation.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {
namespace {

void showLoaded(const CommandContext& context, const UnresolvedFixesPayload& payload) {
    auto printer = context.printer();
    if (context.options.json) return printer.line(encodeJson(payload));
    printer.ok();
    if (payload.unresolvedFixes.empty()) return;
    std::string fixes;
    for (const auto& fix : payload.unresolvedFixes)
        fixes += (fixes.empty() ? "" : ", ") + fix;
    context.remark("warning: the companion does not know these fixes, whose triggers will never fire: " +
                   printable(fixes));
}

Task<> loadScript(CompanionSession& session, LoadScriptRequest script, const CommandContext& context) {
    co_await session.pair();
    auto data = co_await session.request(MessageType::loadScript, std::move(script));
    const auto payload = decodeAnswer<UnresolvedFixesPayload>(data);
    showLoaded(context, payload);
}

void runScript(const CommandContext& context, const std::string& file) {
    const auto script = readScript(file, std::cin);
    converse(context.options,
             [&](CompanionSession& session) { return loadScript(session, script, context); });
}

} // namespace

void addScriptCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("script", "Load a script of triggers");
    const auto file = std::make_shared<std::string>();
    command->add_option("FILE", *file, "The script, JSON; - for the standard input")->required();
    command->callback([&context, file] { runScript(context, *file); });
}

} // namespace tarnly::client
