#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tarnly::simulator {

/// What the aircraft is doing, in the order in which one flight goes through it.
enum class FlightPhase { runway, climb, cruise, downwind, base, finalApproach, rollout };

inline constexpr std::array allFlightPhases{
    FlightPhase::runway, FlightPhase::climb,         FlightPhase::cruise, FlightPhase::downwind,
    FlightPhase::base,   FlightPhase::finalApproach, FlightPhase::rollout};

/// For example "final".
std::string_view name(FlightPhase phase);

std::optional<FlightPhase> flightPhaseNamed(std::string_view text);

/// The phase in which a saved situation begins: one that the file name mentions in any letter case ("Final
/// 09.sit"), else one that follows from the name's bytes, the same every time.
FlightPhase flightPhaseOfSituation(std::string_view fileName);

/// The aircraft and its controls at one moment: a light twin with a retractable gear.
struct FlightState {
    double latitudeDeg = 0;
    double longitudeDeg = 0;
    /// Above mean sea level.
    double elevationM = 0;

    /// Velocity in metres per second.
    double eastMs = 0;
    double upMs = 0;
    double southMs = 0;

    double bankDeg = 0;
    double pitchDeg = 0;
    /// True, from 0 up to below 360.
    double headingDeg = 0;

    /// Rates in degrees per second.
    double rollRate = 0;
    double pitchRate = 0;
    double yawRate = 0;

    /// Positions of levers from 0 to 1, one for each engine.
    std::array<double, 2> throttle{};
    std::array<double, 2> mixture{1, 1};
    std::array<double, 2> propeller{1, 1};
    /// Fuel in the left and the right tank.
    std::array<double, 2> fuelKg{150, 150};

    bool gearHandleDown = true;
    /// How far each wheel is out, nose wheel first; 1 is down and locked.
    std::array<double, 3> gearDeployed{1, 1, 1};
    double flapHandle = 0;
    double flapsDeployed = 0;
    bool autopilotServosOn = false;

    /// Simulated time since the start of the simulator, and the time of day.
    double elapsedS = 0;
    double zuluTimeS = 12 * 3600;
};

/// Height of the wheels above the ground below, metres; negative where someone put the aircraft into a hill.
double heightAboveGroundM(const FlightState& state);

double trueAirspeedMs(const FlightState& state);
double indicatedAirspeedMs(const FlightState& state);
double groundSpeedMs(const FlightState& state);
double meanThrottle(const FlightState& state);

} // namespace tarnly::simulator
