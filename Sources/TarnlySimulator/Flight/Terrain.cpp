#include "TarnlySimulator/Flight/Terrain.hpp"

#include <cmath>

#include "TarnlySimulator/Flight/Angles.hpp"

namespace tarnly::simulator {

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

} // namespace tarnly::simulator
