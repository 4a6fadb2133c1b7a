#pragma once

#include <vector>

#include "TarnlyTrack/Grade/Demand.hpp"
#include "TarnlyTrack/Grade/Grade.hpp"
#include "TarnlyTrack/Grade/GradedFlight.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"

namespace tarnly::track {

/// Below it an aircraft that lands is in the flare, where other numbers hold. Feet above ground.
constexpr double flareFeet = 50;

/// Grades a tolerance of the kind `stable_at` in `grade.part`, which becomes the approach: from where the
/// aircraft comes down through `feet` above ground for the last time to the flare or, where it goes around,
/// to the lowest point. All that the tolerance asks for must hold in all of it.
void gradeApproach(const GradedFlight& flight, const Tolerance& tolerance, Grade& grade);

/// All that such a tolerance asks for. The flight outlives it.
std::vector<Demand> approachDemands(const GradedFlight& flight, const Tolerance& tolerance);

} // namespace tarnly::track
