#include "TarnlySimulator/Flight/FlightState.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "TarnlySimulator/Flight/Globe.hpp"
#include "TarnlySimulator/Flight/Mixing.hpp"

namespace tarnly::simulator {
namespace {

std::string lowerCased(std::string_view text) {
    std::string out(text);
    std::ranges::transform(out, out.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return out;
}

} // namespace

std::string_view name(FlightPhase phase) {
    switch (phase) {
        case FlightPhase::runway:
            return "runway";
        case FlightPhase::climb:
            return "climb";
        case FlightPhase::cruise:
            return "cruise";
        case FlightPhase::downwind:
            return "downwind";
        case FlightPhase::base:
            return "base";
        case FlightPhase::finalApproach:
            return "final";
        case FlightPhase::rollout:
            return "rollout";
    }
    return "";
}

std::optional<FlightPhase> flightPhaseNamed(std::string_view text) {
    const auto found =
        std::ranges::find(allFlightPhases, text, [](FlightPhase phase) { return name(phase); });
    if (found == allFlightPhases.end()) return std::nullopt;
    return *found;
}

FlightPhase flightPhaseOfSituation(std::string_view fileName) {
    const std::string lower = lowerCased(fileName);
    for (const FlightPhase phase : allFlightPhases) {
        if (lower.find(name(phase)) != std::string::npos) return phase;
    }
    return allFlightPhases[mixText(fileName) % allFlightPhases.size()];
}

double heightAboveGroundM(const FlightState& state) {
    return state.elevationM - terrainHeightM(state.latitudeDeg, state.longitudeDeg);
}

double trueAirspeedMs(const FlightState& state) {
    return std::hypot(state.eastMs, state.upMs, state.southMs);
}

double indicatedAirspeedMs(const FlightState& state) {
    return trueAirspeedMs(state) / trueAirspeedFactor(state.elevationM);
}

double groundSpeedMs(const FlightState& state) { return std::hypot(state.eastMs, state.southMs); }

double meanThrottle(const FlightState& state) { return (state.throttle[0] + state.throttle[1]) / 2; }

} // namespace tarnly::simulator
