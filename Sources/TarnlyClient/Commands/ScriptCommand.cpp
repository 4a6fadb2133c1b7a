#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Commands/ScriptTrialCommand.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"
#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"
#include "TarnlyTrack/Trial/ScriptFile.hpp"
#include "TarnlyTrack/Trial/ScriptFixes.hpp"

namespace tarnly::client {
namespace {

struct ScriptOptions {
    std::string file;
    bool isCheck = false;
    bool isTrial = false;
    std::vector<std::filesystem::path> logs;
    std::optional<std::filesystem::path> navigationDatabase;
};

std::vector<ScriptFinding> findingsIn(const std::string& text, const ScriptOptions& options) {
    std::vector<ScriptFinding> findings;
    track::withFixes(options.navigationDatabase,
                     [&](const FixResolver& fixPosition) { findings = checkScript(text, fixPosition); });
    return findings;
}

void check(CommandContext& context, const ScriptOptions& options) {
    const auto text = track::readScript(options.file, std::cin);
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
    if (options.isTrial && options.logs.empty())
        throw UsageError("--try needs a recording, or several: script --try FILE LOG...");
    if (!options.isTrial && !options.logs.empty()) {
        throw UsageError("one script at a time; to try it over recordings, add --try");
    }
    if (options.navigationDatabase && !options.isCheck && !options.isTrial) {
        throw UsageError("--nav-db is for --check and --try: a companion looks in its own database");
    }
    if (options.isCheck) return check(context, options);
    const auto text = track::readScript(options.file, std::cin);
    for (const auto& warning : track::scriptWarnings(text, options.file))
        context.remark(warning);
    const auto script = track::parseScript(text, options.file);
    if (options.isTrial) return tryOut(context, script, options.logs, options.navigationDatabase);
    context.inSession([&](CompanionSession& session) { return load(session, script, context); });
}

} // namespace

void addScriptCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand(
        "script", "Load a script of triggers, look for its faults, or try it over recordings");
    const auto options = std::make_shared<ScriptOptions>();
    command->add_option("FILE", options->file, "The script, JSON; - for the standard input")
        ->required()
        ->check(notEmpty());
    auto* check = command->add_flag("--check", options->isCheck,
                                    "Only look for what can never fire; no companion is needed");
    command
        ->add_flag("--try", options->isTrial,
                   "Tell what would have fired in the recordings LOG; no companion is needed")
        ->excludes(check);
    command->add_option("LOG", options->logs, "Recordings over which --try flies the script")
        ->check(notEmpty());
    command
        ->add_option("--nav-db", options->navigationDatabase,
                     "A navigation database in which --check and --try look for the fixes")
        ->type_name("FILE")
        ->check(notEmpty());
    command->callback([&context, options] { run(context, *options); });
}

} // namespace tarnly::client
