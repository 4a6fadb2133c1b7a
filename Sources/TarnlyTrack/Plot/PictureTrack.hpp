#pragma once

#include <vector>

#include "TarnlyTrack/Plot/Drawing.hpp"
#include "TarnlyTrack/Plot/PlotFlight.hpp"

namespace tarnly::track {

constexpr double trackPanelHeight = 560;

/// The tracks with their marks, their scale and north, below `top`.
void drawTracks(Drawing& drawing, const std::vector<PlotFlight>& flights, double top);

} // namespace tarnly::track
