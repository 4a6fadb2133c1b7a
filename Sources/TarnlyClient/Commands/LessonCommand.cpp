#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Commands/LessonFlying.hpp"
#include "TarnlyClient/Lesson/LessonCheck.hpp"
#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"
#include "TarnlyTrack/Trial/ScriptFixes.hpp"

namespace tarnly::client {
namespace {

constexpr int somethingFound = 1;
constexpr int wrongLesson = 2;

CheckedLesson checkedLesson(const LessonOptions& options) {
    const auto file = readLessonFile(options.file);
    CheckedLesson checked;
    track::withFixes(options.navigationDatabase,
                     [&](const FixResolver& fixPosition) { checked = checkLesson(file, fixPosition); });
    return checked;
}

void check(CommandContext& context, const CheckedLesson& checked) {
    auto printer = context.printer();
    for (const auto& [file, finding] : checked.findings)
        printer.finding(file, finding);
    if (!checked.findings.empty()) {
        context.exitCode = checked.isUsable() ? somethingFound : wrongLesson;
    } else if (!context.options.json) {
        printer.ok();
    }
}

/// Nothing has been sent yet.
void refuseIfWrong(const CommandContext& context, const LessonOptions& options,
                   const CheckedLesson& checked) {
    for (const auto& [file, finding] : checked.findings)
        context.remark(findingText(file, finding));
    if (!checked.isUsable()) {
        throw UsageError("the lesson " + printable(options.file.string()) +
                         " is not flown before this is mended: lesson --check looks at it again");
    }
    std::error_code error;
    if (options.save && std::filesystem::exists(*options.save, error)) {
        throw UsageError("--save: " + printable(options.save->string()) +
                         " is there already; name a new file");
    }
}

void run(CommandContext& context, const LessonOptions& options) {
    const auto checked = checkedLesson(options);
    if (options.isCheck) return check(context, checked);
    refuseIfWrong(context, options, checked);
    flyLesson(context, options, checked.lesson);
}

} // namespace

void addLessonCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("lesson", "Fly a lesson: situation, script, recording and receipt");
    const auto options = std::make_shared<LessonOptions>();
    command->add_option("FILE", options->file, "The lesson, JSON, or its folder")
        ->required()
        ->check(notEmpty());
    command->add_flag("--check", options->isCheck, "Only look for faults in it; no companion is needed");
    command
        ->add_option("--nav-db", options->navigationDatabase,
                     "A navigation database in which to look for the fixes of its script")
        ->type_name("FILE")
        ->check(notEmpty());
    addSeconds(*command, "--wait", "How long the simulator may take to load the situation, 60 when not given",
               [options](auto time) { options->wait = time; });
    addSeconds(*command, "--seconds", "End after this time, whatever the lesson says",
               [options](auto time) { options->time = time; });
    command->add_option("--save", options->save, "A new file for all that was recorded")
        ->type_name("FILE")
        ->check(notEmpty());
    command
        ->add_option("--data-dir", options->dataFolder,
                     "The data folder of a companion on this computer, where it has another one")
        ->type_name("DIR")
        ->check(notEmpty());
    command->callback([&context, options] { run(context, *options); });
}

} // namespace tarnly::client
