#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TarnlyTrack/Plot/Drawing.hpp"
#include "TarnlyTrack/Plot/PlotFlight.hpp"

namespace tarnly::track {

/// A moment that is marked in a picture. Each kind has its own shape.
struct PictureMark {
    enum class Kind { fired, would, miss };

    Kind kind = Kind::fired;
    /// As on the page: 1, s1 (the script's), m1 (missed).
    std::string label;
    double at = 0;
};

std::vector<PictureMark> marksOf(const PlotFlight& flight);

/// A flag on the place, a hollow diamond around it, or a cross through it.
void drawMark(Drawing& drawing, PictureMark::Kind kind, std::size_t place, double x, double y);

/// What the scripts of the flights would have done, and their grades, in words, from `top` down. Returns
/// where that ends.
double drawWords(Drawing& drawing, const std::vector<PlotFlight>& flights, double top);

} // namespace tarnly::track
