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

/// A position on the globe, degrees.
struct GeoPoint {
    double latitudeDeg = 0;
    double longitudeDeg = 0;
};

/// Metres in one degree of latitude on a sphere of 6371 km.
inline constexpr double metresPerDegree = 111194.93;

/// Metres in one degree of longitude at a latitude; never zero, also at the poles.
double metresPerDegreeOfLongitude(double latitudeDeg);

/// The position `eastM` and `northM` metres from `origin`, for distances of some ten kilometres.
GeoPoint displaced(GeoPoint origin, double eastM, double northM);

double distanceM(GeoPoint a, GeoPoint b);

/// Height of the ground above mean sea level, metres, for a position in degrees: gentle invented hills all
/// round the globe, between 50 and 710 metres, smooth also across the date line.
double terrainHeightM(double latitudeDeg, double longitudeDeg);

/// True airspeed divided by indicated airspeed at a height above mean sea level: one over the root of the air
/// density relative to sea level, by the International Standard Atmosphere's law for the troposphere.
double trueAirspeedFactor(double elevationM);

} // namespace tarnly::simulator
