#pragma once

#include <string>
#include <vector>

#include "TarnlyTrack/Plot/PlotFlight.hpp"

namespace tarnly::track {

/// In how many columns of pixels a picture shows a flight.
constexpr std::size_t pictureColumns = 900;

/// The flights as a picture that stands still, SVG 1.1 in UTF-8: their tracks, with the triggers that fired,
/// and below them altitude and height above ground over time, laid over each other by their beginnings.
std::string plotPicture(const std::vector<PlotFlight>& flights);

} // namespace tarnly::track
