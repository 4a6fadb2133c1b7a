#pragma once

#include <cstddef>
#include <optional>

#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::track {

/// What positions and indicated altitudes half a second apart tell of the speed: from the sample before to
/// the one after, where no gap is between; at the ends of a segment from or to the sample itself.
/// docs/tracks.md tells how far off it is.
struct Derived {
    std::optional<double> groundSpeedKt;
    /// True, degrees from 0 to below 360. Absent where the aircraft has moved by less than a metre.
    std::optional<double> trackDeg;
    /// Of the indicated altitude.
    std::optional<double> verticalSpeedFtMin;
};

Derived derivedAt(const FlightLog& log, std::size_t sample);

} // namespace tarnly::track
