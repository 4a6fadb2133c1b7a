#include "TarnlySimulator/Flight/FlightModel.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlySimulator/Flight/Globe.hpp"

namespace tarnly::simulator {
namespace {

constexpr double gravity = 9.81;
constexpr double substepS = 0.02;
constexpr double rollRateDegS = 12;
constexpr double pitchRateDegS = 3;
constexpr double climbChangeMs2 = 2;
constexpr double speedChangeMs2 = 1.2;
constexpr double takeOffThrustMs2 = 3;
constexpr double brakingMs2 = 2;
constexpr double gearTravelS = 6;
constexpr double flapTravelS = 8;
constexpr double fullThrottleFuelKgS = 0.01;

double approached(double value, double aim, double most) {
    return value + std::clamp(aim - value, -most, most);
}

/// Slower means nose higher: from 1 degree at 60 m/s to 9 at 28.
double angleOfAttackDeg(double indicatedMs) { return std::clamp(16 - indicatedMs / 4, 1.0, 9.0); }

} // namespace

FlightModel::FlightModel(std::uint64_t seed, FlightPhase start) : pilot_(seed) { begin(start); }

void FlightModel::begin(FlightPhase phase) {
    handsOffLeftS_ = throttleTakenLeftS_ = standingS_ = 0;
    pilot_.begin(phase, state_);
    if (!isOnGround()) state_.pitchDeg = angleOfAttackDeg(indicatedAirspeedMs(state_));
}

FlightState& FlightModel::takeOver() {
    if (handsOffLeftS_ <= 0) state_.rollRate = state_.pitchRate = state_.yawRate = 0;
    handsOffLeftS_ = handsOffS;
    return state_;
}

FlightState& FlightModel::takeThrottle() {
    throttleTakenLeftS_ = throttleTakenS;
    return state_;
}

void FlightModel::step(double seconds) {
    // Fixed parts, so that one step of a second and ten of a tenth lead to the same place.
    pendingS_ += seconds;
    while (pendingS_ > substepS - 1e-9) {
        pendingS_ -= substepS;
        advance(substepS);
    }
}

void FlightModel::advance(double seconds) {
    state_.elapsedS += seconds;
    state_.zuluTimeS = std::fmod(state_.zuluTimeS + seconds, 24 * 3600);
    moveGearAndFlaps(seconds);
    burnFuel(seconds);
    if (throttleTakenLeftS_ > 0) {
        throttleTakenLeftS_ -= seconds;
        if (throttleTakenLeftS_ <= 0) state_.throttle.fill(pilot_.throttleSetting());
    }
    if (handsOffLeftS_ > 0) {
        coast(seconds);
        return;
    }
    pilot_.proceed(state_, standingS_, throttleTakenLeftS_ > 0);
    if (isOnGround()) {
        roll(seconds);
    } else {
        fly(seconds);
    }
}

void FlightModel::coast(double seconds) {
    state_.bankDeg = wrapped180(state_.bankDeg + state_.rollRate * seconds);
    state_.pitchDeg = std::clamp(state_.pitchDeg + state_.pitchRate * seconds, -90.0, 90.0);
    state_.headingDeg = wrapped360(state_.headingDeg + state_.yawRate * seconds);
    move(seconds);
    handsOffLeftS_ -= seconds;
    if (handsOffLeftS_ <= 0) pilot_.resume(state_);
}

void FlightModel::roll(double seconds) {
    const double thrust = takeOffThrustMs2 * meanThrottle(state_);
    const bool brakes = phase() == FlightPhase::rollout;
    const double speed =
        std::max(0.0, groundSpeedMs(state_) + (thrust - (brakes ? brakingMs2 : 0.3)) * seconds);
    standingS_ = brakes && speed <= 0 ? standingS_ + seconds : 0;
    state_.bankDeg = approached(state_.bankDeg, 0, rollRateDegS * seconds);
    state_.pitchDeg = approached(state_.pitchDeg, 0, pitchRateDegS * seconds);
    state_.rollRate = state_.pitchRate = state_.yawRate = 0;
    setVelocity(speed, 0);
    move(seconds);
    const double ground = terrainHeightM(state_.latitudeDeg, state_.longitudeDeg);
    state_.upMs = speed > 0 ? (ground - state_.elevationM) / seconds : 0;
    state_.upMs = std::clamp(state_.upMs, -speed, speed); // the jolt of touching down is no climb
    state_.elevationM = ground;
}

void FlightModel::fly(double seconds) {
    const Pilot::Aim aim = pilot_.aim(state_);
    const double climb = approached(state_.upMs, aim.climbMs, climbChangeMs2 * seconds);
    const double indicated =
        approached(indicatedAirspeedMs(state_), aim.indicatedAirspeedMs, speedChangeMs2 * seconds);
    const double speed = std::max(indicated * trueAirspeedFactor(state_.elevationM), std::abs(climb) + 1);
    turnTo(aim.headingDeg, seconds);
    const double pathDeg = degrees(std::asin(climb / speed));
    const double pitch =
        approached(state_.pitchDeg, pathDeg + angleOfAttackDeg(indicated), pitchRateDegS * seconds);
    state_.pitchRate = (pitch - state_.pitchDeg) / seconds;
    state_.pitchDeg = pitch;
    setVelocity(speed, climb);
    move(seconds);
}

void FlightModel::turnTo(double headingDeg, double seconds) {
    const double offDeg = wrapped180(headingDeg - state_.headingDeg);
    const double bank =
        approached(state_.bankDeg, std::clamp(1.2 * offDeg, -25.0, 25.0), rollRateDegS * seconds);
    state_.rollRate = (bank - state_.bankDeg) / seconds;
    state_.bankDeg = bank;
    const double speed = std::max(trueAirspeedMs(state_), 20.0);
    // A coordinated turn; beyond 60 degrees, where someone put it, no tighter than at 60.
    state_.yawRate = degrees(gravity * std::tan(radians(std::clamp(bank, -60.0, 60.0))) / speed);
    state_.headingDeg = wrapped360(state_.headingDeg + state_.yawRate * seconds);
}

void FlightModel::setVelocity(double speedMs, double climbMs) {
    const double level = std::sqrt(std::max(0.0, speedMs * speedMs - climbMs * climbMs));
    const double heading = radians(state_.headingDeg);
    state_.eastMs = level * std::sin(heading);
    state_.southMs = -level * std::cos(heading);
    state_.upMs = climbMs;
}

void FlightModel::move(double seconds) {
    const GeoPoint place = displaced({state_.latitudeDeg, state_.longitudeDeg}, state_.eastMs * seconds,
                                     -state_.southMs * seconds);
    state_.latitudeDeg = place.latitudeDeg;
    state_.longitudeDeg = place.longitudeDeg;
    state_.elevationM += state_.upMs * seconds;
}

void FlightModel::moveGearAndFlaps(double seconds) {
    const double gearAim = state_.gearHandleDown ? 1 : 0;
    for (double& wheel : state_.gearDeployed)
        wheel = approached(wheel, gearAim, seconds / gearTravelS);
    state_.flapsDeployed = approached(state_.flapsDeployed, state_.flapHandle, seconds / flapTravelS);
}

void FlightModel::burnFuel(double seconds) {
    for (std::size_t side = 0; side < state_.fuelKg.size(); ++side) {
        double& fuel = state_.fuelKg[side];
        fuel -= fullThrottleFuelKgS * state_.throttle[side] * seconds;
        if (fuel < 10) fuel = 150; // the tanker comes unseen, so that the flight never ends
    }
}

} // namespace tarnly::simulator
