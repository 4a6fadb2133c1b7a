#pragma once

#include <cstdint>

#include "TarnlySimulator/Flight/FlightState.hpp"
#include "TarnlySimulator/Flight/Pilot.hpp"

namespace tarnly::simulator {

/// A flight that goes on by itself: takes off, climbs, crosses the hills, lowers its gear and lands, over and
/// over.
///
/// No clock and no chance: the same seed and the same steps and writes give the same flight. What is written
/// from outside is taken over; the pilot leaves it alone for a while and then finds the way back to the
/// route. There are no crashes: an aircraft that is put into a hill climbs out of it. Not synchronised.
class FlightModel {
  public:
    /// How long, in simulated seconds, the aircraft keeps a position, attitude or velocity that was written.
    static constexpr double handsOffS = 10;
    /// How long the pilot leaves a throttle alone that was written.
    static constexpr double throttleTakenS = 30;

    FlightModel(std::uint64_t seed, FlightPhase start);

    /// Lets `seconds` of simulated time pass.
    void step(double seconds);

    const FlightState& state() const { return state_; }
    FlightPhase phase() const { return pilot_.phase(); }
    bool isOnGround() const { return pilot_.isOnGround(); }

    /// Jumps to the start of `phase` at the home runway.
    void begin(FlightPhase phase);

    /// The state, to write position, attitude or velocity: the aircraft then goes straight on as written.
    FlightState& takeOver();

    /// The state, to write the throttle.
    FlightState& takeThrottle();

    /// The state, to write other controls and the time: they stay until the pilot uses them next.
    FlightState& controls() { return state_; }

  private:
    void advance(double seconds);
    void coast(double seconds);
    void roll(double seconds);
    void fly(double seconds);
    void turnTo(double headingDeg, double seconds);
    void setVelocity(double speedMs, double climbMs);
    void move(double seconds);
    void moveGearAndFlaps(double seconds);
    void burnFuel(double seconds);

    Pilot pilot_;
    FlightState state_;
    double pendingS_ = 0;
    double handsOffLeftS_ = 0;
    double throttleTakenLeftS_ = 0;
    double standingS_ = 0;
};

} // namespace tarnly::simulator
