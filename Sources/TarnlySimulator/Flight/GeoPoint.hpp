#pragma once

namespace tarnly::simulator {

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

} // namespace tarnly::simulator
