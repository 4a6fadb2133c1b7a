#include "TarnlySimulator/Flight/Globe.hpp"

#include <algorithm>
#include <cmath>

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

double terrainHeightM(double latitudeDeg, double longitudeDeg) {
    const double lat = radians(latitudeDeg);
    const double lon = radians(longitudeDeg);
    // Whole numbers of waves round the globe keep the date line seamless. Wave lengths of 100, 28 and 7 km
    // with these heights stay below a slope of 7 %, so that an approach of 4 degrees clears every hill before
    // the runway.
    const double ranges = 200 * std::sin(400 * lat + 0.3) * std::cos(300 * lon);
    const double hills = 100 * std::sin(1400 * lat + 900 * lon);
    const double knolls = 25 * std::sin(5000 * lat) * std::sin(4000 * lon + 0.7);
    // Meridians converge: without the cosine the hills would become walls toward the poles.
    return 380 + std::cos(lat) * (ranges + hills + knolls);
}

double trueAirspeedFactor(double elevationM) {
    constexpr double seaLevelTemperatureK = 288.15;
    constexpr double lapseRateKPerM = 0.0065;
    constexpr double densityExponent = 4.2559;
    constexpr double highestM = 15000;
    const double height = std::clamp(elevationM, 0.0, highestM);
    const double temperatureRatio = 1 - height * lapseRateKPerM / seaLevelTemperatureK;
    return std::pow(temperatureRatio, -densityExponent / 2);
}

} // namespace tarnly::simulator
