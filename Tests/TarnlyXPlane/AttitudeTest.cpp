#include "TarnlyXPlane/Attitude.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace tarnly {
namespace {

TEST(Attitude, DensityRatioIsOneAtAndBelowSeaLevel) {
    EXPECT_EQ(rootOfDensityRatio(0), 1);
    EXPECT_EQ(rootOfDensityRatio(-400), 1);
}

TEST(Attitude, DensityRatioFollowsTheStandardAtmosphere) {
    // Densities of the ICAO Standard Atmosphere, in kg/m3.
    constexpr double seaLevel = 1.2250;
    EXPECT_NEAR(std::pow(rootOfDensityRatio(1000), 2), 1.1117 / seaLevel, 1e-3);
    EXPECT_NEAR(std::pow(rootOfDensityRatio(5000), 2), 0.73643 / seaLevel, 1e-3);
    EXPECT_NEAR(std::pow(rootOfDensityRatio(10000), 2), 0.41351 / seaLevel, 1e-3);
}

TEST(Attitude, DensityRatioUsesTheGivenConstants) {
    const double expected = std::sqrt(std::pow(1 + 3000 * -2.25577e-5, 4.25588));
    EXPECT_DOUBLE_EQ(rootOfDensityRatio(3000), expected);
}

TEST(Attitude, HeightsAboveFifteenKilometresCountAsFifteen) {
    EXPECT_EQ(rootOfDensityRatio(15000.5), rootOfDensityRatio(15000));
    EXPECT_EQ(rootOfDensityRatio(80000), rootOfDensityRatio(15000));
    EXPECT_LT(rootOfDensityRatio(15000), rootOfDensityRatio(14999));
}

TEST(Attitude, LevelFlightNorthIsMinusZ) {
    const auto velocity = localVelocity(100, 0, 0, 0);
    EXPECT_DOUBLE_EQ(velocity.x, 0);
    EXPECT_DOUBLE_EQ(velocity.y, 0);
    EXPECT_DOUBLE_EQ(velocity.z, -51.4444);
}

TEST(Attitude, LevelFlightEastIsPlusX) {
    const auto velocity = localVelocity(100, 0, 0, 90);
    EXPECT_DOUBLE_EQ(velocity.x, 51.4444);
    EXPECT_NEAR(velocity.z, 0, 1e-12);
}

TEST(Attitude, PitchTurnsSpeedUpwards) {
    const auto velocity = localVelocity(100, 0, 30, 180);
    EXPECT_DOUBLE_EQ(velocity.y, 51.4444 * std::sin(30 * std::numbers::pi / 180));
    EXPECT_DOUBLE_EQ(velocity.z, 51.4444 * std::cos(30 * std::numbers::pi / 180));
    EXPECT_NEAR(velocity.x, 0, 1e-12);
    EXPECT_LT(localVelocity(100, 0, -5, 0).y, 0);
}

TEST(Attitude, ThinAirMakesTheSameIndicatedSpeedFaster) {
    const auto velocity = localVelocity(100, 10000, 0, 0);
    EXPECT_DOUBLE_EQ(velocity.z, -51.4444 / rootOfDensityRatio(10000));
    EXPECT_LT(velocity.z, -80);
}

} // namespace
} // namespace tarnly
