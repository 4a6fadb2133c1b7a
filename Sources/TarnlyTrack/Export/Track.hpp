#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::track {

/// Decimals of a degree in an exported file: a tenth of a millimetre.
inline constexpr int degreeDecimals = 9;

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

} // namespace tarnly::track
