#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Plot/PlotFlight.hpp"
#include "TarnlyTrack/Trial/ScriptTrial.hpp"

namespace tarnly::track {

/// The samples that are marked because of `trial`.
std::vector<std::size_t> markedOf(const Trial& trial);

/// What is drawn of a trial of the script `script` over `log`, whose first `count` samples are drawn.
PlotTrial plotTrial(const Trial& trial, const FlightLog& log, std::size_t count, std::string script);

} // namespace tarnly::track
