#include "TarnlySimulator/Flight/GeoPoint.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlySimulator/Flight/Angles.hpp"

namespace tarnly::simulator {

double metresPerDegreeOfLongitude(double latitudeDeg) {
    return metresPerDegree * std::max(0.01, std::cos(radians(latitudeDeg)));
}

GeoPoint displaced(GeoPoint origin, double eastM, double northM) {
    return {std::clamp(origin.latitudeDeg + northM / metresPerDegree, -89.9, 89.9),
            wrapped180(origin.longitudeDeg + eastM / metresPerDegreeOfLongitude(origin.latitudeDeg))};
}

double distanceM(GeoPoint a, GeoPoint b) {
    const double north = (b.latitudeDeg - a.latitudeDeg) * metresPerDegree;
    const double east =
        wrapped180(b.longitudeDeg - a.longitudeDeg) * metresPerDegreeOfLongitude(a.latitudeDeg);
    return std::hypot(north, east);
}

} // namespace tarnly::simulator
