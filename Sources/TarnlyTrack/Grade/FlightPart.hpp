#pragma once

#include <limits>
#include <string>

#include "TarnlyTrack/Grade/GradedFlight.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"

namespace tarnly::track {

/// The part of a flight that a tolerance is about, by its times in seconds of the recording's clock.
struct FlightPart {
    double begin = -std::numeric_limits<double>::infinity();
    double end = std::numeric_limits<double>::infinity();
    /// Why it never came, in one clause: `"abeam" did not fire`. Empty for one that has an end and a
    /// beginning, whether the recording has something of it or not.
    std::string missing;
};

FlightPart partOf(const GradedFlight& flight, const Tolerance& tolerance);

} // namespace tarnly::track
