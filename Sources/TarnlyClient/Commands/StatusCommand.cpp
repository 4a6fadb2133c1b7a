#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::client {
namespace {

using Folder = std::optional<std::filesystem::path>;

CompanionStatus decodeStatus(const std::string& json) {
    try {
        return decodeJson<CompanionStatus>(parseJson(json));
    } catch (const JsonError&) {
        throw ClientError(
            "the companion tells what this tool does not understand; use the tool that came with it");
    }
}

void showStatus(const CommandContext& context, const Folder& dataFolder) {
    if (context.options.companion.host || context.options.companion.instance) {
        throw UsageError(
            "status asks the companion on this computer: it takes neither --host nor --instance");
    }
    const auto folder = dataFolder ? *dataFolder : applicationDataFolder();
    const auto json = askForStatus(folder, context.options.companion.patience);
    auto printer = context.printer();
    if (context.options.json) return printer.line(json);
    for (const auto& line : statusLines(decodeStatus(json)))
        printer.line(printable(line));
}

} // namespace

void addStatusCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("status", "Show how the companion on this computer stands");
    const auto dataFolder = std::make_shared<Folder>();
    command->add_option("--data-dir", *dataFolder, "The companion's data folder, where it has another one")
        ->type_name("DIR")
        ->check(notEmpty());
    command->callback([&context, dataFolder] { showStatus(context, *dataFolder); });
}

} // namespace tarnly::client
