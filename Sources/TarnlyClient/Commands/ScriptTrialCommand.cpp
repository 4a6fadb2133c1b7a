#include "TarnlyClient/Commands/ScriptTrialCommand.hpp"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/ScriptFixes.hpp"
#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyClient/Output/TrialText.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"
#include "TarnlyTrack/Trial/ScriptTrial.hpp"

namespace tarnly::client {
namespace {

/// Each fix is looked up once: the database's patience ends long before the last recording may.
FixResolver remembering(const FixResolver& fixPosition,
                        std::map<std::string, std::optional<Coordinate>>& known) {
    return [&](const std::string& ident) {
        auto found = known.find(ident);
        if (found == known.end()) {
            found = known.emplace(ident, fixPosition ? fixPosition(ident) : std::nullopt).first;
        }
        return found->second;
    };
}

TriggerEngine engineOf(const LoadScriptRequest& script, const FixResolver& fixPosition) {
    try {
        return ScriptTriggerMapper::toEngine(script, fixPosition);
    } catch (const ScriptTriggerMapper::MappingError& error) {
        throw UsageError(std::string("companions would refuse the script: ") + error.what());
    } catch (const ProtocolLimitError& error) {
        throw UsageError(std::string("companions would refuse the script: ") + error.what());
    }
}

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
    withFixes(navigationDatabase, [&](const FixResolver& inDatabase) {
        std::map<std::string, std::optional<Coordinate>> known;
        const auto fixPosition = remembering(inDatabase, known);
        const auto engine = engineOf(script, fixPosition);
        if (!inDatabase && !engine.unresolvedFixes().empty()) {
            context.remark(
                "the script names fixes: give --nav-db a navigation database, or they are not found");
        }
        auto printer = context.printer();
        for (const auto& file : logs) {
            const auto log = readLog(file);
            const auto trial = track::tryScript(engine, log, fixPosition);
            printer.line(context.options.json ? trialJson(file.string(), log, trial)
                                              : trialText(file.string(), trial));
        }
    });
}

} // namespace tarnly::client
