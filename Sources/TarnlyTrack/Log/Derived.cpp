#include "TarnlyTrack/Log/Derived.hpp"

#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::track {
namespace {

constexpr double leastMovedMeters = 1;

} // namespace

Derived derivedAt(const FlightLog& log, std::size_t sample) {
    const auto isJoined = [&](std::size_t earlier) {
        return !isGap(log.elapsedSeconds(earlier), log.elapsedSeconds(earlier + 1));
    };
    const auto from = sample > 0 && isJoined(sample - 1) ? sample - 1 : sample;
    const auto to = sample + 1 < log.size() && isJoined(sample) ? sample + 1 : sample;
    const double seconds = log.elapsedSeconds(to) - log.elapsedSeconds(from);
    Derived derived;
    if (!(seconds > 0)) return derived;
    const auto begin = log.position(from);
    const auto end = log.position(to);
    if (begin && end) {
        const double meters = greatCircleMeters(*begin, *end);
        derived.groundSpeedKt = meters / metersPerNauticalMile * 3600 / seconds;
        if (meters >= leastMovedMeters) derived.trackDeg = initialTrackDeg(*begin, *end);
    }
    const auto low = log.value(Quantity::altitudeFt, from);
    const auto high = log.value(Quantity::altitudeFt, to);
    if (low && high) derived.verticalSpeedFtMin = (*high - *low) * 60 / seconds;
    return derived;
}

} // namespace tarnly::track
