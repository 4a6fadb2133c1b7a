#include "TarnlyTrack/Log/GreatCircle.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tarnly::track {
namespace {

constexpr double meanRadiusMeters = 6'371'008.8;
/// Metres a second.
constexpr double fastest = 2500;
constexpr double shortestStepSeconds = 0.1;

double radians(double degrees) { return degrees * std::numbers::pi / 180; }

double square(double value) { return value * value; }

} // namespace

double greatCircleMeters(Position from, Position to) {
    const double acrossLat = square(std::sin(radians(to.lat - from.lat) / 2));
    const double acrossLon = square(std::sin(radians(to.lon - from.lon) / 2));
    const double haversine = acrossLat + std::cos(radians(from.lat)) * std::cos(radians(to.lat)) * acrossLon;
    return 2 * meanRadiusMeters * std::asin(std::sqrt(std::min(1.0, haversine)));
}

double initialTrackDeg(Position from, Position to) {
    const double lon = radians(to.lon - from.lon);
    const double east = std::sin(lon) * std::cos(radians(to.lat));
    const double north = std::cos(radians(from.lat)) * std::sin(radians(to.lat)) -
                         std::sin(radians(from.lat)) * std::cos(radians(to.lat)) * std::cos(lon);
    const double degrees = std::atan2(east, north) * 180 / std::numbers::pi;
    const double turned = degrees < 0 ? degrees + 360 : degrees;
    return turned < 360 ? turned : 0; // a tiny negative angle rounds up to 360
}

bool canFly(Position from, Position to, double seconds) {
    return greatCircleMeters(from, to) <= fastest * std::max(seconds, shortestStepSeconds);
}

} // namespace tarnly::track
