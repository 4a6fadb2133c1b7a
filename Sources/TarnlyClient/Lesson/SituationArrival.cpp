#include "TarnlyClient/Lesson/SituationArrival.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::client {
namespace {

/// How long values have to come after the loading: the first ones may be of an aircraft that is being placed.
constexpr double steadySeconds = 2;

/// How long an aircraft has to stand still where nothing was seen of a loading. The companion tells old
/// values for up to eight seconds while the simulator is busy.
constexpr double stillSeconds = 12;

/// Faster than what lessons are flown in: 1000 knots, and 60,000 feet a minute.
constexpr double fastestMeters = 514;
constexpr double fastestFeet = 1000;

/// More than an aircraft gets ahead of its speed from one look to the next.
constexpr double leapMeters = 100;

/// Values come ten times a second, so that two looks may be further apart than what they show, or nearer.
constexpr double slackSeconds = 0.5;

/// A simulator that stumbles shows the same place twice, so one look alone tells no speed.
constexpr std::size_t looksForSpeed = 4;

/// An aircraft that stands trembles.
constexpr double trembleMeters = 2;
constexpr double trembleFeet = 5;

double metersBetween(const AircraftPlace& a, const AircraftPlace& b) {
    return track::greatCircleMeters({a.lat, a.lon}, {b.lat, b.lon});
}

} // namespace

SituationArrival::SituationArrival(const std::optional<AircraftPlace>& before)
    : last_(before), hasBegun_(!before), standing_(before) {}

SituationArrival::State SituationArrival::see(double seconds, const std::optional<AircraftPlace>& now) {
    if (!now) {
        hasBegun_ = true;
        last_.reset();
        lastAt_ = seconds;
        return State::waiting;
    }
    if (!last_ || hasJumped(seconds, *now)) {
        hasBegun_ = true;
        speeds_.clear();
        steadySince_ = seconds;
    }
    watchStanding(seconds, *now);
    last_ = now;
    lastAt_ = seconds;
    if (hasBegun_) return seconds - steadySince_ >= steadySeconds ? State::arrived : State::waiting;
    return seconds - standingSince_ >= stillSeconds ? State::still : State::waiting;
}

bool SituationArrival::hasJumped(double seconds, const AircraftPlace& now) {
    const double time = seconds - lastAt_;
    const double meters = metersBetween(*last_, now);
    const bool isSpeedKnown = speeds_.size() == looksForSpeed;
    const double speed = isSpeedKnown ? *std::ranges::max_element(speeds_) : fastestMeters;
    if (time > 0) speeds_.push_back(meters / time);
    if (speeds_.size() > looksForSpeed) speeds_.pop_front();
    return meters > std::min(speed, fastestMeters) * (time + slackSeconds) + leapMeters ||
           std::abs(last_->altitudeFt - now.altitudeFt) > fastestFeet * (time + slackSeconds);
}

void SituationArrival::watchStanding(double seconds, const AircraftPlace& now) {
    const bool stands = standing_ && metersBetween(*standing_, now) <= trembleMeters &&
                        std::abs(standing_->altitudeFt - now.altitudeFt) <= trembleFeet;
    if (stands) return;
    standing_ = now;
    standingSince_ = seconds;
}

} // namespace tarnly::client
