#include "TarnlyTrack/Log/FlightSummary.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::track {
namespace {

std::optional<double> highest(const FlightLog& log, Quantity quantity) {
    std::optional<double> result;
    for (const double value : log.column(quantity)) {
        if (!std::isnan(value)) result = std::max(value, result.value_or(value));
    }
    return result;
}

/// Between the positions of the stretch, over those that are not known.
double distanceWithin(const FlightLog& log, Stretch stretch) {
    double meters = 0;
    std::optional<Position> last;
    for (auto sample = stretch.begin; sample < stretch.end; ++sample) {
        const auto position = log.position(sample);
        if (!position) continue;
        if (last && *last != *position) meters += greatCircleMeters(*last, *position);
        last = position;
    }
    return meters;
}

} // namespace

FlightSummary summaryOf(const FlightLog& log) {
    FlightSummary summary;
    summary.samples = log.size();
    summary.firedTriggers = log.fired().size();
    summary.faults = log.faults;
    summary.highestIndicatedFt = highest(log, Quantity::altitudeFt);
    summary.highestAglFt = highest(log, Quantity::aglFt);
    std::optional<Stretch> before;
    for (const auto& segment : log.segments()) {
        summary.distanceMeters += distanceWithin(log, segment);
        summary.lengthSeconds = std::max(summary.lengthSeconds, log.elapsedSeconds(segment.end - 1));
        if (before) {
            ++summary.gaps;
            const double gap = log.elapsedSeconds(segment.begin) - log.elapsedSeconds(before->end - 1);
            summary.gapSeconds += std::max(0.0, gap); // time that goes back is no time
        }
        before = segment;
    }
    for (const auto& stretch : log.frozen()) {
        ++summary.frozenStretches;
        summary.frozenSeconds += log.elapsedSeconds(stretch.end - 1) - log.elapsedSeconds(stretch.begin);
    }
    return summary;
}

} // namespace tarnly::track
