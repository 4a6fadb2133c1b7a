#include "TarnlyClient/Commands/ScriptTrialCommand.hpp"

#include <string>

#include "TarnlyClient/Output/TrialText.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"
#include "TarnlyTrack/Trial/ScriptFlights.hpp"

namespace tarnly::client {
namespace {

track::FlightLog readLog(const std::filesystem::path& file) {
    try {
        return track::readFlightLog(file);
    } catch (const track::TrackError& error) {
        throw UsageError(error.what());
    }
}

} // namespace

void tryOut(const CommandContext& context, const LoadScriptRequest& script,
            const std::vector<std::filesystem::path>& logs,
            const std::optional<std::filesystem::path>& navigationDatabase) {
    const auto remark = [&](const std::string& text) { context.remark(text); };
    track::withScript(script, navigationDatabase, remark, [&](const track::ScriptFlight& fly) {
        auto printer = context.printer();
        for (const auto& file : logs) {
            const auto log = readLog(file);
            const auto trial = fly(log);
            printer.line(context.options.json ? trialJson(file.string(), log, trial)
                                              : trialText(file.string(), trial));
        }
    });
}

} // namespace tarnly::client
