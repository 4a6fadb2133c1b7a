#include "TarnlyClient/Lesson/SituationArrival.hpp"

#include <cmath>

#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::client {
namespace {

/// How long values have to come after the loading: the first ones may be of an aircraft that is being placed.
constexpr double steadySeconds = 2;

/// How long to look for signs of a loading before an aircraft that does not move is taken for loaded. The
/// companion tells old values for up to eight seconds while the simulator is busy.
constexpr double unmovedSeconds = 12;

/// Faster than what lessons are flown in: 1000 knots, and 60,000 feet a minute.
constexpr double fastestMeters = 514;
constexpr double fastestFeet = 1000;

/// An aircraft that stands trembles.
constexpr double trembleMeters = 2;
constexpr double trembleFeet = 5;

double metersBetween(const AircraftPlace& a, const AircraftPlace& b) {
    return track::greatCircleMeters({a.lat, a.lon}, {b.lat, b.lon});
}

} // namespace

SituationArrival::SituationArrival(const std::optional<AircraftPlace>& before)
    : before_(before), last_(before), hasBegun_(!before) {}

SituationArrival::State SituationArrival::see(double seconds, const std::optional<AircraftPlace>& now) {
    if (!now) {
        hasBegun_ = true;
        last_.reset();
        lastAt_ = seconds;
        return State::waiting;
    }
    if (!last_ || hasJumped(seconds, *now)) {
        hasBegun_ = true;
        steadySince_ = seconds;
    }
    hasMoved_ = hasMoved_ || !before_ || metersBetween(*before_, *now) > trembleMeters ||
                std::abs(before_->altitudeFt - now->altitudeFt) > trembleFeet;
    last_ = now;
    lastAt_ = seconds;
    if (hasBegun_) return seconds - steadySince_ >= steadySeconds ? State::arrived : State::waiting;
    return !hasMoved_ && seconds >= unmovedSeconds ? State::unmoved : State::waiting;
}

bool SituationArrival::hasJumped(double seconds, const AircraftPlace& now) const {
    // Values come ten times a second, so that two looks may be further apart than what they show, or nearer.
    constexpr double slack = 0.5;
    const double time = seconds - lastAt_ + slack;
    return metersBetween(*last_, now) > fastestMeters * time ||
           std::abs(last_->altitudeFt - now.altitudeFt) > fastestFeet * time;
}

} // namespace tarnly::client
