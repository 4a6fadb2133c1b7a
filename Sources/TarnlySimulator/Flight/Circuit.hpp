#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "TarnlySimulator/Flight/FlightState.hpp"
#include "TarnlySimulator/Flight/Globe.hpp"

namespace tarnly::simulator {

/// The route of one flight: from a runway over the hills and back to the same runway, as straight legs.
class Circuit {
  public:
    /// Metres from the runway's threshold, along the runway and to the right of it.
    struct Point {
        double along = 0;
        double right = 0;
    };

    struct Leg {
        FlightPhase phase;
        Point to;
    };

    /// `seed` shifts the turning points over the hills.
    Circuit(GeoPoint threshold, double runwayHeadingDeg, std::uint64_t seed);

    GeoPoint threshold() const { return threshold_; }
    double thresholdElevationM() const { return thresholdElevationM_; }
    double cruiseElevationM() const { return thresholdElevationM_ + cruiseHeightM_; }

    const std::vector<Leg>& legs() const { return legs_; }
    std::size_t firstLeg(FlightPhase phase) const;
    std::size_t legAfter(std::size_t leg) const { return (leg + 1) % legs_.size(); }
    Point startOf(std::size_t leg) const;

    Point position(GeoPoint place) const;
    GeoPoint place(Point position) const;

    /// True direction of a leg, degrees.
    double courseDeg(std::size_t leg) const;
    /// How far `position` is to the right of a leg's line.
    double crossTrackM(std::size_t leg, Point position) const;
    /// How far it is to a leg's end, measured along the leg; negative beyond.
    double remainingM(std::size_t leg, Point position) const;

  private:
    double bearingDeg(std::size_t leg) const;

    GeoPoint threshold_;
    double runwayHeadingDeg_;
    double thresholdElevationM_;
    double cruiseHeightM_;
    std::vector<Leg> legs_;
};

} // namespace tarnly::simulator
