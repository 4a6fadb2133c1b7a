#include "TarnlySimulator/Flight/Atmosphere.hpp"

#include <algorithm>
#include <cmath>

namespace tarnly::simulator {

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
