#pragma once

#include <cstddef>
#include <optional>

#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::track {

/// What there is to say of a recording as a whole. A plain value.
struct FlightSummary {
    std::size_t samples = 0;
    /// From the recording's beginning to its last sample.
    double lengthSeconds = 0;
    /// Along great circles; nothing is added across gaps.
    double distanceMeters = 0;
    /// Absent where no altitude, or no height, is known.
    std::optional<double> highestIndicatedFt;
    std::optional<double> highestAglFt;
    std::size_t firedTriggers = 0;
    std::size_t gaps = 0;
    double gapSeconds = 0;
    std::size_t frozenStretches = 0;
    double frozenSeconds = 0;
    LogFaults faults;
};

FlightSummary summaryOf(const FlightLog& log);

} // namespace tarnly::track
