#include "TarnlySimulator/Flight/Circuit.hpp"

#include <gtest/gtest.h>

#include "TarnlySimulator/Flight/Globe.hpp"

namespace tarnly::simulator {
namespace {

const Circuit circuit({47, 9}, 90, 1);

TEST(Circuit, PositionsLeadBackToTheirPlaces) {
    const GeoPoint place = circuit.place({2000, -700});
    const auto position = circuit.position(place);
    EXPECT_NEAR(position.along, 2000, 0.01);
    EXPECT_NEAR(position.right, -700, 0.01);
}

TEST(Circuit, RightOfARunwayToTheEastIsSouth) {
    EXPECT_LT(circuit.place({0, 1000}).latitudeDeg, 47);
    EXPECT_GT(circuit.place({1000, 0}).longitudeDeg, 9);
}

TEST(Circuit, LegsFollowOneAnotherThroughAllPhases) {
    for (std::size_t phase = 1; phase < allFlightPhases.size(); ++phase)
        EXPECT_LT(circuit.firstLeg(allFlightPhases[phase - 1]), circuit.firstLeg(allFlightPhases[phase]));
    EXPECT_EQ(circuit.legAfter(circuit.legs().size() - 1), 0u);
}

TEST(Circuit, CoursesAreThoseOfALeftHandPattern) {
    EXPECT_NEAR(circuit.courseDeg(circuit.firstLeg(FlightPhase::runway)), 90, 1e-9);
    EXPECT_NEAR(circuit.courseDeg(circuit.firstLeg(FlightPhase::downwind)), 270, 1e-9);
    EXPECT_NEAR(circuit.courseDeg(circuit.firstLeg(FlightPhase::base)), 180, 1e-9);
    EXPECT_NEAR(circuit.courseDeg(circuit.firstLeg(FlightPhase::finalApproach)), 90, 1e-9);
}

TEST(Circuit, MeasuresOffTheLegAndAlongIt) {
    const auto downwind = circuit.firstLeg(FlightPhase::downwind);
    const auto end = circuit.legs()[downwind].to;
    // Flying back along the runway, what lies farther to the runway's left is on the right.
    EXPECT_NEAR(circuit.crossTrackM(downwind, {end.along + 1000, end.right - 50}), 50, 1e-6);
    EXPECT_NEAR(circuit.remainingM(downwind, {end.along + 1000, end.right - 50}), 1000, 1e-6);
    EXPECT_NEAR(circuit.remainingM(downwind, {end.along - 10, end.right}), -10, 1e-6);
}

TEST(Circuit, StandsOnTheTerrain) {
    EXPECT_EQ(circuit.thresholdElevationM(), terrainHeightM(47, 9));
    EXPECT_GE(circuit.cruiseElevationM(), circuit.thresholdElevationM() + 600);
}

TEST(Circuit, AnotherSeedIsAnotherRoute) {
    const Circuit other({47, 9}, 90, 2);
    const auto cruise = circuit.firstLeg(FlightPhase::cruise);
    EXPECT_NE(circuit.legs()[cruise].to.along, other.legs()[cruise].to.along);
}

TEST(Angles, WrapIntoTheirRanges) {
    EXPECT_EQ(wrapped360(360), 0);
    EXPECT_EQ(wrapped360(-90), 270);
    EXPECT_EQ(wrapped360(725), 5);
    EXPECT_EQ(wrapped180(180), -180);
    EXPECT_EQ(wrapped180(190), -170);
    EXPECT_EQ(wrapped180(-190), 170);
    EXPECT_LT(wrapped360(-1e-15), 360);
}

} // namespace
} // namespace tarnly::simulator
