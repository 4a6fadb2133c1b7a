#include "TarnlySimulator/Flight/Globe.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tarnly::simulator {
namespace {

TEST(Terrain, StaysBetweenItsBoundsEverywhere) {
    double lowest = 1e9;
    double highest = -1e9;
    for (double lat = -90; lat <= 90; lat += 0.71) {
        for (double lon = -180; lon < 180; lon += 0.93) {
            lowest = std::min(lowest, terrainHeightM(lat, lon));
            highest = std::max(highest, terrainHeightM(lat, lon));
        }
    }
    EXPECT_GE(lowest, 50);
    EXPECT_LE(highest, 710);
    EXPECT_GT(highest - lowest, 300);
}

TEST(Terrain, IsGentlerThanTheGlidePath) {
    for (double lat = 46; lat < 48; lat += 0.0101) {
        for (double lon = 8; lon < 10; lon += 0.0103) {
            const GeoPoint here{lat, lon};
            const GeoPoint north = displaced(here, 0, 100);
            const GeoPoint east = displaced(here, 100, 0);
            const double slopeNorth =
                (terrainHeightM(north.latitudeDeg, north.longitudeDeg) - terrainHeightM(lat, lon)) / 100;
            const double slopeEast =
                (terrainHeightM(east.latitudeDeg, east.longitudeDeg) - terrainHeightM(lat, lon)) / 100;
            ASSERT_LT(std::hypot(slopeNorth, slopeEast), 0.0699) << lat << " " << lon;
        }
    }
}

TEST(Terrain, HasNoSeamAtTheDateLine) {
    for (double lat = -80; lat <= 80; lat += 7)
        EXPECT_NEAR(terrainHeightM(lat, 180), terrainHeightM(lat, -180), 1e-6);
}

TEST(Terrain, IsTheSameEveryTime) { EXPECT_EQ(terrainHeightM(47.1, 9.2), terrainHeightM(47.1, 9.2)); }

TEST(GeoPoint, DisplacementAndDistanceAgree) {
    const GeoPoint origin{47, 9};
    const GeoPoint moved = displaced(origin, 3000, -4000);
    EXPECT_NEAR(distanceM(origin, moved), 5000, 1);
    EXPECT_LT(moved.latitudeDeg, 47);
    EXPECT_GT(moved.longitudeDeg, 9);
}

TEST(GeoPoint, DistanceGoesTheShortWayAcrossTheDateLine) {
    const GeoPoint west{0, 179.99};
    const GeoPoint east = displaced(west, 3000, 0);
    EXPECT_LT(east.longitudeDeg, 0);
    EXPECT_NEAR(distanceM(west, east), 3000, 1);
}

} // namespace
} // namespace tarnly::simulator
