#include "TarnlyTrack/Grade/FlightPart.hpp"

#include <optional>

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"

namespace tarnly::track {
namespace {

std::string notFired(const std::string& triggerId) { return inQuotes(triggerId) + " did not fire"; }

} // namespace

FlightPart partOf(const GradedFlight& flight, const Tolerance& tolerance) {
    FlightPart part;
    const auto& from = tolerance.from;
    const auto& to = tolerance.to;
    auto earliest = part.begin;
    if (tolerance.fromSeconds) part.begin = *tolerance.fromSeconds;
    if (tolerance.toSeconds) part.end = *tolerance.toSeconds;
    if (from) {
        const auto fired = flight.firedAt(*from);
        if (!fired) return {.missing = notFired(*from)};
        earliest = *fired;
        part.begin = earliest + tolerance.fromSeconds.value_or(0);
    }
    if (to) {
        const auto fired = flight.firedAt(*to, earliest);
        if (!fired && flight.firedAt(*to)) {
            return {.missing = inQuotes(*to) + " fired before " + inQuotes(*from) + ", and not again"};
        }
        if (!fired) return {.missing = notFired(*to)};
        part.end = *fired + tolerance.toSeconds.value_or(0);
    }
    return part;
}

} // namespace tarnly::track
