#include "TarnlyTrack/Trial/ScriptFlights.hpp"

#include <map>

#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"
#include "TarnlyTrack/Trial/ScriptFixes.hpp"

namespace tarnly::track {
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

} // namespace

void withScript(const LoadScriptRequest& script,
                const std::optional<std::filesystem::path>& navigationDatabase,
                const std::function<void(const std::string&)>& remark,
                const std::function<void(const ScriptFlight&)>& work) {
    withFixes(navigationDatabase, [&](const FixResolver& inDatabase) {
        std::map<std::string, std::optional<Coordinate>> known;
        const auto fixPosition = remembering(inDatabase, known);
        const auto engine = engineOf(script, fixPosition);
        if (!inDatabase && !engine.unresolvedFixes().empty())
            remark("the script names fixes: give --nav-db a navigation database, or they are not found");
        work([&](const FlightLog& log) { return tryScript(engine, log, fixPosition); });
    });
}

} // namespace tarnly::track
