#include "TarnlyClient/Commands/Commands.hpp"
#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyClient/Companion/CompanionFinder.hpp"

namespace tarnly::client {
namespace {

void discover(const CommandContext& context) {
    if (context.options.host || context.options.instance) {
        throw UsageError("discover looks for all companions: it takes neither --host nor --instance");
    }
    const auto found = findCompanions(context.options.timeout);
    if (found.empty()) throw ClientError("no companion found: is it running on this network?");
    auto printer = context.printer();
    for (const auto& service : found)
        printer.companion(service);
}

} // namespace

void addDiscoverCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("discover", "List the companions on the network");
    command->callback([&context] { discover(context); });
}

} // namespace tarnly::client
