#include "TarnlyXPlane/Attitude.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tarnly {
namespace {

constexpr double metresPerSecondPerKnot = 0.514444;
constexpr double radiansPerDegree = std::numbers::pi / 180;
/// Temperature lapse over temperature at sea level: 0.0065 K/m / 288.15 K.
constexpr double lapsePerMetre = -2.25577e-5;
constexpr double densityExponent = 4.25588;
constexpr double highestMetres = 15000;

} // namespace

double rootOfDensityRatio(double elevation) {
    const double height = std::min(elevation, highestMetres);
    const double temperatureRatio = elevation <= 0 ? 1 : 1 + height * lapsePerMetre;
    return std::sqrt(std::pow(temperatureRatio, densityExponent));
}

LocalVelocity localVelocity(double iasKts, double elevation, double pitchDeg, double headingDeg) {
    const double speed = iasKts * metresPerSecondPerKnot / rootOfDensityRatio(elevation);
    const double pitch = pitchDeg * radiansPerDegree;
    const double heading = headingDeg * radiansPerDegree;
    return {speed * std::cos(pitch) * std::sin(heading), speed * std::sin(pitch),
            -speed * std::cos(pitch) * std::cos(heading)};
}

} // namespace tarnly
