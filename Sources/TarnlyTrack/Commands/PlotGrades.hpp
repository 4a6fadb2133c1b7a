#pragma once

#include <vector>

#include "TarnlyTrack/Grade/Tolerance.hpp"
#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Plot/PlotFlight.hpp"

namespace tarnly::track {

/// What is drawn of the grades of a flight: for each of the tolerances, which are usable, what was found, and
/// the values that were judged.
std::vector<PlotGrade> plotGrades(const FlightLog& log, const std::vector<Tolerance>& tolerances);

} // namespace tarnly::track
