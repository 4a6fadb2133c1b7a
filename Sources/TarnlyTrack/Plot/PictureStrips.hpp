#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TarnlyTrack/Plot/Drawing.hpp"
#include "TarnlyTrack/Plot/PlotFlight.hpp"

namespace tarnly::track {

constexpr double stripHeight = 170;

/// What `plotKeys` has at `key` over time, laid over each other by the beginnings of the flights, below
/// `top`; `title` stands above it.
void drawStrip(Drawing& drawing, const std::vector<PlotFlight>& flights, std::size_t key,
               const std::string& title, double top);

} // namespace tarnly::track
