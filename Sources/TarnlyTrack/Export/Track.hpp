#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::track {

/// The samples of a log that a line goes through, and where it is interrupted.
struct Track {
    /// Places of samples in the log, ascending.
    std::vector<std::uint32_t> samples;
    /// Parts of `samples`, none of them empty, between which there is a gap of time.
    std::vector<Stretch> parts;
};

/// Through all samples with a position and, where `height` is given, with that as well. A sample without them
/// is passed over, where that leaves no gap.
Track trackOf(const FlightLog& log, std::optional<Quantity> height = std::nullopt);

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
