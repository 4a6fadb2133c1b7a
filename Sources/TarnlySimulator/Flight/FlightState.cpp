#include "TarnlySimulator/Flight/FlightState.hpp"

#include <cmath>

#include "TarnlySimulator/Flight/Atmosphere.hpp"
#include "TarnlySimulator/Flight/Terrain.hpp"

namespace tarnly::simulator {

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
