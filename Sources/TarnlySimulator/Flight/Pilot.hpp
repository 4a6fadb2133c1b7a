#pragma once

#include <cstddef>
#include <cstdint>

#include "TarnlySimulator/Flight/Circuit.hpp"
#include "TarnlySimulator/Flight/FlightState.hpp"

namespace tarnly::simulator {

/// Decides where to fly and at what speed: follows a circuit leg by leg, over and over, and sets the controls
/// when a phase begins. Moves nothing itself.
class Pilot {
  public:
    /// What the pilot wants the aircraft to do now.
    struct Aim {
        double headingDeg;
        double climbMs;
        double indicatedAirspeedMs;
    };

    explicit Pilot(std::uint64_t seed);

    FlightPhase phase() const { return circuit_.legs()[leg_].phase; }
    bool isOnGround() const { return phase() == FlightPhase::runway || phase() == FlightPhase::rollout; }
    const Circuit& circuit() const { return circuit_; }

    /// Puts the aircraft at the start of `phase` at the home runway.
    void begin(FlightPhase phase, FlightState& state);

    /// Goes over to the next leg when it is time, and sets the controls for it. The lever for the engines is
    /// left alone while `throttleIsTaken`.
    void proceed(FlightState& state, double standingS, bool throttleIsTaken);

    /// Finds the way from wherever the aircraft has been put: on the ground nearby it goes on from there, in
    /// the air it joins the route, and far away from the runway it invents another one ahead.
    void resume(FlightState& state);

    Aim aim(const FlightState& state) const;

    double throttleSetting() const;

  private:
    bool isLegDone(const FlightState& state, double standingS) const;
    void enterLeg(std::size_t leg, FlightState& state, bool throttleIsTaken);
    double climbAimMs(const FlightState& state) const;
    double approachClimbMs(const FlightState& state) const;
    double elevationAimM(const FlightState& state) const;

    std::uint64_t seed_;
    Circuit home_;
    Circuit circuit_;
    std::size_t leg_ = 0;
};

} // namespace tarnly::simulator
