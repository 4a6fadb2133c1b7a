#pragma once

#include <cmath>
#include <numbers>

namespace tarnly::simulator {

constexpr double radians(double degrees) { return degrees * (std::numbers::pi / 180); }
constexpr double degrees(double radians) { return radians * (180 / std::numbers::pi); }

/// The same direction from -180 up to below 180 degrees.
inline double wrapped180(double degrees) {
    const double turned = degrees - 360 * std::floor((degrees + 180) / 360);
    return turned < 180 ? turned : -180;
}

/// The same direction from 0 up to below 360 degrees.
inline double wrapped360(double degrees) {
    const double turned = degrees - 360 * std::floor(degrees / 360);
    return turned < 360 ? turned : 0;
}

} // namespace tarnly::simulator
