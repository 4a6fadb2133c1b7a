#include "TarnlySimulator/Flight/Pilot.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlySimulator/Flight/Globe.hpp"

namespace tarnly::simulator {
namespace {

constexpr GeoPoint homeThreshold{47.10, 9.20};
constexpr double homeRunwayHeadingDeg = 70;
constexpr double farAwayM = 60000;

constexpr double rotationSpeedMs = 36;
constexpr double steepestClimbMs = 5;
constexpr double glidePathSlope = 0.0699; // 4 degrees
constexpr double restOnRunwayS = 10;
constexpr double legCorrectionDegPerM = 0.06;

struct Settings {
    double indicatedAirspeedMs;
    double throttle;
    double flaps;
    bool gearDown;
    bool autopilot;
};

constexpr Settings settingsFor(FlightPhase phase) {
    switch (phase) {
        case FlightPhase::runway:
            return {45, 1.0, 0.25, true, false};
        case FlightPhase::climb:
            return {45, 0.95, 0.25, false, false};
        case FlightPhase::cruise:
            return {60, 0.7, 0, false, true};
        case FlightPhase::downwind:
            return {50, 0.5, 0.25, true, false};
        case FlightPhase::base:
            return {42, 0.4, 0.5, true, false};
        case FlightPhase::finalApproach:
            return {37, 0.35, 1.0, true, false};
        case FlightPhase::rollout:
            return {0, 0, 1.0, true, false};
    }
    return {};
}

GeoPoint placeOf(const FlightState& state) { return {state.latitudeDeg, state.longitudeDeg}; }

double terrainAheadM(const FlightState& state, double distance) {
    const double heading = radians(state.headingDeg);
    const GeoPoint ahead =
        displaced(placeOf(state), distance * std::sin(heading), distance * std::cos(heading));
    return terrainHeightM(ahead.latitudeDeg, ahead.longitudeDeg);
}

/// How early a turn to the next leg has to begin: the tangent length of a turn at 25 degrees of bank.
double turnLeadM(const FlightState& state, double turnDeg) {
    const double speed = trueAirspeedMs(state);
    const double radius = speed * speed / (9.81 * std::tan(radians(25)));
    return radius * std::tan(radians(std::min(std::abs(turnDeg), 120.0) / 2)) + 2 * speed;
}

} // namespace

Pilot::Pilot(std::uint64_t seed)
    : seed_(seed), home_(homeThreshold, homeRunwayHeadingDeg, seed), circuit_(home_) {}

double Pilot::throttleSetting() const { return settingsFor(phase()).throttle; }

void Pilot::begin(FlightPhase phase, FlightState& state) {
    circuit_ = home_;
    enterLeg(circuit_.firstLeg(phase), state, false);
    auto position = circuit_.startOf(leg_);
    if (phase == FlightPhase::climb) position = {800, 0};
    const GeoPoint place = circuit_.place(position);
    state.latitudeDeg = place.latitudeDeg;
    state.longitudeDeg = place.longitudeDeg;
    state.headingDeg = circuit_.courseDeg(leg_);
    state.elevationM = phase == FlightPhase::climb ? terrainAheadM(state, 0) + 30 : elevationAimM(state);
    const bool moves = phase != FlightPhase::runway;
    const double landed = phase == FlightPhase::rollout ? 30 : settingsFor(phase).indicatedAirspeedMs;
    const double speed = moves ? landed * trueAirspeedFactor(state.elevationM) : 0;
    state.eastMs = speed * std::sin(radians(state.headingDeg));
    state.southMs = -speed * std::cos(radians(state.headingDeg));
    state.upMs = state.bankDeg = state.pitchDeg = 0;
    state.rollRate = state.pitchRate = state.yawRate = 0;
    state.gearDeployed.fill(state.gearHandleDown ? 1 : 0);
    state.flapsDeployed = state.flapHandle;
}

void Pilot::enterLeg(std::size_t leg, FlightState& state, bool throttleIsTaken) {
    leg_ = leg;
    const Settings settings = settingsFor(phase());
    if (!throttleIsTaken) state.throttle.fill(settings.throttle);
    state.flapHandle = settings.flaps;
    state.gearHandleDown = settings.gearDown;
    state.autopilotServosOn = settings.autopilot;
}

void Pilot::proceed(FlightState& state, double standingS, bool throttleIsTaken) {
    if (!isLegDone(state, standingS)) return;
    const auto next = circuit_.legAfter(leg_);
    if (circuit_.legs()[next].phase == phase()) {
        leg_ = next; // what someone has set in the cockpit stays so
    } else {
        enterLeg(next, state, throttleIsTaken);
    }
}

bool Pilot::isLegDone(const FlightState& state, double standingS) const {
    switch (phase()) {
        case FlightPhase::runway:
            return indicatedAirspeedMs(state) >= rotationSpeedMs;
        case FlightPhase::finalApproach:
            return heightAboveGroundM(state) <= 0;
        case FlightPhase::rollout:
            return standingS >= restOnRunwayS;
        default:
            break;
    }
    const auto next = circuit_.legAfter(leg_);
    const double turnDeg = wrapped180(circuit_.courseDeg(next) - circuit_.courseDeg(leg_));
    return circuit_.remainingM(leg_, circuit_.position(placeOf(state))) < turnLeadM(state, turnDeg);
}

void Pilot::resume(FlightState& state) {
    const GeoPoint place = placeOf(state);
    const bool touchesGround = std::abs(heightAboveGroundM(state)) < 5;
    if (distanceM(place, circuit_.threshold()) > farAwayM) {
        const double heading = radians(state.headingDeg);
        circuit_ = Circuit(displaced(place, 8000 * std::sin(heading), 8000 * std::cos(heading)),
                           state.headingDeg, seed_);
        enterLeg(circuit_.firstLeg(touchesGround ? FlightPhase::runway : FlightPhase::cruise), state, true);
        return;
    }
    const auto position = circuit_.position(place);
    const bool missesRunway = std::abs(position.right) > 500 || position.along > 500;
    if (isOnGround() && !touchesGround) enterLeg(circuit_.firstLeg(FlightPhase::climb), state, true);
    if (phase() == FlightPhase::finalApproach && missesRunway)
        enterLeg(circuit_.firstLeg(FlightPhase::cruise), state, true);
}

Pilot::Aim Pilot::aim(const FlightState& state) const {
    const Settings settings = settingsFor(phase());
    const double offM = circuit_.crossTrackM(leg_, circuit_.position(placeOf(state)));
    const double correction = std::clamp(offM * legCorrectionDegPerM, -60.0, 60.0);
    // More engine than the phase asks for makes it faster: 30 m/s between idle and full.
    const double speed = settings.indicatedAirspeedMs + 30 * (meanThrottle(state) - settings.throttle);
    return {wrapped360(circuit_.courseDeg(leg_) - correction), climbAimMs(state), std::max(speed, 28.0)};
}

double Pilot::climbAimMs(const FlightState& state) const {
    if (phase() == FlightPhase::finalApproach) return approachClimbMs(state);
    return std::clamp(0.2 * (elevationAimM(state) - state.elevationM), -steepestClimbMs, steepestClimbMs);
}

double Pilot::approachClimbMs(const FlightState& state) const {
    const double glide = -glidePathSlope * groundSpeedMs(state);
    const double corrected = glide + 0.2 * (elevationAimM(state) - state.elevationM);
    const double flare = -(0.5 + 0.12 * std::max(0.0, heightAboveGroundM(state)));
    return std::clamp(std::max(corrected, flare), -steepestClimbMs, -0.3);
}

double Pilot::elevationAimM(const FlightState& state) const {
    const double runway = circuit_.thresholdElevationM();
    const double ground = std::max(terrainAheadM(state, 0), terrainAheadM(state, 1500));
    switch (phase()) {
        case FlightPhase::runway:
        case FlightPhase::rollout:
            return terrainAheadM(state, 0);
        case FlightPhase::climb:
        case FlightPhase::cruise:
            return std::max(circuit_.cruiseElevationM(), ground + 250);
        case FlightPhase::downwind:
            return std::max(runway + 330, ground + 150);
        case FlightPhase::base:
            return std::max(runway + 300, ground + 120);
        case FlightPhase::finalApproach:
            break;
    }
    const double along = circuit_.position(placeOf(state)).along;
    return runway + glidePathSlope * std::max(0.0, -along);
}

} // namespace tarnly::simulator
