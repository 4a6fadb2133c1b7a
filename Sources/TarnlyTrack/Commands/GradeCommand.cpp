#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Commands/TolerancesFile.hpp"
#include "TarnlyTrack/Grade/GradeText.hpp"
#include "TarnlyTrack/Grade/GradedFlight.hpp"
#include "TarnlyTrack/Output/Listing.hpp"

/// grade: how well a recorded flight was flown.
namespace tarnly::track {
namespace {

namespace fs = std::filesystem;

/// Beside those of all subcommands: the flight was graded, and something was not met or not judged.
constexpr int notAllMet = 3;

struct GradeOptions {
    fs::path file;
    fs::path tolerances;
    bool isJson = false;
};

/// What of the file is not graded.
void tellFaults(const CommandContext& context, const fs::path& file, const FlightLog& log) {
    const auto name = printable(file.filename().string());
    if (const auto faults = faultsText(log.faults); !faults.empty()) context.remark(name + " has " + faults);
    const auto leftOut = log.size() - GradedFlight(log).size();
    if (leftOut == 0) return;
    context.remark(name + " has two recordings: the second one, of " + std::to_string(leftOut) +
                   " samples, is not graded");
}

void grade(CommandContext& context, const GradeOptions& options) {
    const auto tolerances = usableTolerances(context, options.tolerances);
    const auto log = context.read(options.file);
    tellFaults(context, options.file, log);
    const auto grades = gradesOf(log, tolerances);
    if (options.isJson) {
        context.out << gradesJson(options.file, log, grades) << '\n';
    } else {
        for (const auto& each : grades)
            context.out << gradeLine(each) << '\n';
        context.out << gradesSum(grades) << '\n';
    }
    const auto isMet = [](const Grade& each) { return each.verdict == Grade::Verdict::met; };
    if (!std::ranges::all_of(grades, isMet)) context.exitCode = notAllMet;
}

} // namespace

void addGradeCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("grade", "Tell how well a recorded flight was flown, by tolerances");
    const auto options = std::make_shared<GradeOptions>();
    command->add_option("FILE", options->file, "The recording")->required();
    command->add_option("TOLERANCES", options->tolerances, "What is asked of the flight, a JSON file")
        ->required();
    command->add_flag("--json", options->isJson, "Print a JSON object");
    command->callback([&context, options] { grade(context, *options); });
}

} // namespace tarnly::track
