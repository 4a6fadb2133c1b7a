#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyTrack/Grade/GradedFlight.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"

namespace tarnly::track {

/// A value that a tolerance looks at, and what is permitted of it.
struct GradedValue {
    /// "altitude"
    std::string name;
    std::string unit;
    /// What the recording says of a sample; absent where it does not tell.
    std::function<std::optional<double>(std::size_t sample)> value;
    std::optional<double> least{};
    std::optional<double> most{};
};

/// None for a time between two triggers. The flight outlives them.
std::vector<GradedValue> gradedValues(const GradedFlight& flight, const Tolerance& tolerance);

} // namespace tarnly::track
