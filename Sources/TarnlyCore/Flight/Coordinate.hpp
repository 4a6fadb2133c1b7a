#pragma once

namespace tarnly {

/// A position in degrees.
struct Coordinate {
    double latitude = 0;
    double longitude = 0;

    bool operator==(const Coordinate&) const = default;
};

} // namespace tarnly
