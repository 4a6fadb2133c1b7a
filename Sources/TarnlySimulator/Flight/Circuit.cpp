#include "TarnlySimulator/Flight/Circuit.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlySimulator/Flight/Globe.hpp"
#include "TarnlySimulator/Flight/Mixing.hpp"

namespace tarnly::simulator {
namespace {

/// Between -1000 and 1000 metres.
double shiftM(std::uint64_t seed, std::uint64_t which) { return 2000 * fraction(mix(seed + which)) - 1000; }

std::vector<Circuit::Leg> makeLegs(std::uint64_t seed) {
    return {
        {FlightPhase::runway, {1000, 0}},
        {FlightPhase::climb, {3500, 0}},
        {FlightPhase::cruise, {8000 + shiftM(seed, 1), 0}},
        {FlightPhase::cruise, {9000 + shiftM(seed, 2), -6000 + shiftM(seed, 3)}},
        {FlightPhase::cruise, {3000, -9500 + shiftM(seed, 4)}},
        {FlightPhase::cruise, {3000, -2200}},
        {FlightPhase::downwind, {-4500, -2200}},
        {FlightPhase::base, {-4500, 0}},
        {FlightPhase::finalApproach, {0, 0}},
        {FlightPhase::rollout, {1000, 0}},
    };
}

} // namespace

Circuit::Circuit(GeoPoint threshold, double runwayHeadingDeg, std::uint64_t seed)
    : threshold_(threshold),
      runwayHeadingDeg_(runwayHeadingDeg),
      thresholdElevationM_(terrainHeightM(threshold.latitudeDeg, threshold.longitudeDeg)),
      cruiseHeightM_(600 + 200 * fraction(mix(seed))),
      legs_(makeLegs(seed)) {}

std::size_t Circuit::firstLeg(FlightPhase phase) const {
    const auto found = std::ranges::find(legs_, phase, &Leg::phase);
    return static_cast<std::size_t>(found - legs_.begin());
}

Circuit::Point Circuit::startOf(std::size_t leg) const {
    const FlightPhase phase = legs_[leg].phase;
    if (phase == FlightPhase::runway || phase == FlightPhase::rollout) return {};
    return legs_[leg - 1].to;
}

Circuit::Point Circuit::position(GeoPoint place) const {
    const double north = (place.latitudeDeg - threshold_.latitudeDeg) * metresPerDegree;
    const double east = wrapped180(place.longitudeDeg - threshold_.longitudeDeg) *
                        metresPerDegreeOfLongitude(threshold_.latitudeDeg);
    const double heading = radians(runwayHeadingDeg_);
    return {north * std::cos(heading) + east * std::sin(heading),
            east * std::cos(heading) - north * std::sin(heading)};
}

GeoPoint Circuit::place(Point position) const {
    const double heading = radians(runwayHeadingDeg_);
    return displaced(threshold_, position.along * std::sin(heading) + position.right * std::cos(heading),
                     position.along * std::cos(heading) - position.right * std::sin(heading));
}

double Circuit::bearingDeg(std::size_t leg) const {
    const Point from = startOf(leg);
    const Point to = legs_[leg].to;
    return degrees(std::atan2(to.right - from.right, to.along - from.along));
}

double Circuit::courseDeg(std::size_t leg) const { return wrapped360(runwayHeadingDeg_ + bearingDeg(leg)); }

double Circuit::crossTrackM(std::size_t leg, Point position) const {
    const double bearing = radians(bearingDeg(leg));
    const Point to = legs_[leg].to;
    return (position.right - to.right) * std::cos(bearing) - (position.along - to.along) * std::sin(bearing);
}

double Circuit::remainingM(std::size_t leg, Point position) const {
    const double bearing = radians(bearingDeg(leg));
    const Point to = legs_[leg].to;
    return (to.along - position.along) * std::cos(bearing) + (to.right - position.right) * std::sin(bearing);
}

} // namespace tarnly::simulator
