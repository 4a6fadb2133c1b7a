#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Commands/InputFiles.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"
#include "TarnlyClient/Output/ReadableText.hpp"
#include "TarnlyCore/NavData/NavDatabase.hpp"
#include "TarnlyCore/NavData/NavDatabaseProblem.hpp"
#include "TarnlyCore/NavData/NavFile.hpp"
#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {
namespace {

struct ScriptOptions {
    std::string file;
    bool isCheck = false;
    std::optional<std::filesystem::path> navigationDatabase;
};

/// More are no help to who loads a script; the check lists all.
constexpr std::size_t mostWarnings = 20;

/// The one that is named, else the one that a companion on this computer has made, if there is one.
std::optional<std::string> databaseFor(const ScriptOptions& options) {
    if (options.navigationDatabase) {
        auto named = options.navigationDatabase->string();
        if (const auto problem = problemOfNavDatabase(named)) throw UsageError("--nav-db: " + *problem);
        return named;
    }
    try {
        auto own = (applicationDataFolder() / ownNavFile).string();
        if (!problemOfNavDatabase(own)) return own;
    } catch (const std::runtime_error&) {
        return std::nullopt; // a person without a home folder
    }
    return std::nullopt;
}

std::vector<ScriptFinding> findingsIn(const std::string& text, const ScriptOptions& options) {
    const auto chosen = databaseFor(options);
    if (!chosen) return checkScript(text);
    const auto& path = *chosen;
    const SystemClock clock;
    Guarded<std::optional<std::string>> trouble; // told on the database's thread
    const NavDatabase database(
        path, [&](const std::string& warning) { trouble.with([&](auto& told) { told = warning; }); });
    NavDatabase::Lookup fixes(database, clock, [] { return true; });
    auto findings = checkScript(text, [&](const std::string& ident) { return fixes.resolve(ident); });
    // Otherwise fixes that nobody has looked for would count as unknown.
    if (const auto told = trouble.copy()) throw ClientError("the fixes could not all be looked up: " + *told);
    return findings;
}

void check(CommandContext& context, const ScriptOptions& options) {
    const auto text = readScript(options.file, std::cin);
    const auto findings = findingsIn(text, options);
    auto printer = context.printer();
    for (const auto& finding : findings)
        printer.finding(options.file, finding);
    if (!findings.empty()) {
        context.exitCode = 1;
    } else if (!context.options.json) {
        printer.ok();
    }
}

void warnOfFaults(const CommandContext& context, const std::string& file, const std::string& text) {
    const auto findings = checkScript(text);
    const auto shown = std::min(findings.size(), mostWarnings);
    for (std::size_t index = 0; index < shown; ++index)
        context.remark(findingText(file, findings[index]));
    if (shown == findings.size()) return;
    context.remark("and " + std::to_string(findings.size() - shown) + " more; script --check lists them all");
}

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

Task<> load(CompanionSession& session, LoadScriptRequest script, const CommandContext& context) {
    co_await session.pair();
    auto data = co_await session.request(MessageType::loadScript, std::move(script));
    const auto payload = decodeAnswer<UnresolvedFixesPayload>(data);
    showLoaded(context, payload);
}

void run(CommandContext& context, const ScriptOptions& options) {
    if (options.isCheck) return check(context, options);
    const auto text = readScript(options.file, std::cin);
    warnOfFaults(context, options.file, text);
    const auto script = parseScript(text, options.file);
    context.inSession([&](CompanionSession& session) { return load(session, script, context); });
}

} // namespace

void addScriptCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("script", "Load a script of triggers, or look for its faults");
    const auto options = std::make_shared<ScriptOptions>();
    command->add_option("FILE", options->file, "The script, JSON; - for the standard input")
        ->required()
        ->check(notEmpty());
    auto* check = command->add_flag("--check", options->isCheck,
                                    "Only look for what can never fire; no companion is needed");
    command
        ->add_option("--nav-db", options->navigationDatabase,
                     "The navigation database in which --check looks for the fixes; the one that the "
                     "companion has made when not given")
        ->type_name("FILE")
        ->check(notEmpty())
        ->needs(check);
    command->callback([&context, options] { run(context, *options); });
}

} // namespace tarnly::client
