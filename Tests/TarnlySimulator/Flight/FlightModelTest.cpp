#include "TarnlySimulator/Flight/FlightModel.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "TarnlySimulator/Flight/Globe.hpp"

namespace tarnly::simulator {
namespace {

void flyUntil(FlightModel& flight, FlightPhase phase) {
    for (int tenth = 0; tenth < 20000 && flight.phase() != phase; ++tenth)
        flight.step(0.1);
    ASSERT_EQ(flight.phase(), phase);
}

TEST(Atmosphere, FollowsTheStandardAtmosphere) {
    EXPECT_EQ(trueAirspeedFactor(0), 1);
    EXPECT_EQ(trueAirspeedFactor(-100), 1);
    EXPECT_NEAR(1 / std::pow(trueAirspeedFactor(5000), 2), 0.73643 / 1.2250, 1e-3);
    EXPECT_EQ(trueAirspeedFactor(15000), trueAirspeedFactor(30000));
}

TEST(FlightModel, FliesThroughAllPhasesOverAndOver) {
    FlightModel flight(1, FlightPhase::runway);
    for (int round = 0; round < 3; ++round) {
        for (std::size_t phase = 1; phase < allFlightPhases.size(); ++phase) {
            const auto before = flight.phase();
            EXPECT_EQ(before, allFlightPhases[phase - 1]);
            while (flight.phase() == before && flight.state().elapsedS < 4000)
                flight.step(0.1);
            EXPECT_EQ(flight.phase(), allFlightPhases[phase]);
        }
        flyUntil(flight, FlightPhase::runway);
    }
    EXPECT_LT(flight.state().elapsedS, 3600);
}

class FlightOfASeed : public testing::TestWithParam<std::uint64_t> {};

TEST_P(FlightOfASeed, StaysAboveTheHillsAndLandsOnTheRunway) {
    FlightModel flight(GetParam(), FlightPhase::cruise);
    const Pilot pilot(GetParam());
    double lowest = 1e9;
    double highest = 0;
    while (flight.phase() != FlightPhase::rollout && flight.state().elapsedS < 2000) {
        const double height = heightAboveGroundM(flight.state());
        if (flight.phase() != FlightPhase::finalApproach) lowest = std::min(lowest, height);
        highest = std::max(highest, height);
        ASSERT_LE(std::abs(flight.state().bankDeg), 25.01);
        flight.step(0.1);
    }
    ASSERT_EQ(flight.phase(), FlightPhase::rollout);
    EXPECT_GT(lowest, 100);
    EXPECT_GT(highest, 500);
    const auto touchdown =
        pilot.circuit().position({flight.state().latitudeDeg, flight.state().longitudeDeg});
    EXPECT_NEAR(touchdown.right, 0, 5);
    EXPECT_NEAR(touchdown.along, 0, 500);
    EXPECT_NEAR(heightAboveGroundM(flight.state()), 0, 0.5);
}

INSTANTIATE_TEST_SUITE_P(Seeds, FlightOfASeed, testing::Values(1, 2, 3, 4, 5, 99, 12345));

TEST(FlightModel, TheSameStepsGiveTheSameFlight) {
    FlightModel a(7, FlightPhase::runway);
    FlightModel b(7, FlightPhase::runway);
    for (int second = 0; second < 500; ++second) {
        a.step(1);
        for (int tenth = 0; tenth < 10; ++tenth)
            b.step(0.1);
    }
    EXPECT_EQ(a.state().latitudeDeg, b.state().latitudeDeg);
    EXPECT_EQ(a.state().elevationM, b.state().elevationM);
    EXPECT_EQ(a.state().bankDeg, b.state().bankDeg);
}

TEST(FlightModel, AnotherSeedIsAnotherFlight) {
    FlightModel a(1, FlightPhase::cruise);
    FlightModel b(2, FlightPhase::cruise);
    a.step(120);
    b.step(120);
    EXPECT_NE(a.state().latitudeDeg, b.state().latitudeDeg);
}

TEST(FlightModel, GearGoesUpAfterTakeOffAndIsLockedBeforeLanding) {
    FlightModel flight(1, FlightPhase::runway);
    EXPECT_EQ(flight.state().gearDeployed[0], 1);
    flyUntil(flight, FlightPhase::climb);
    EXPECT_FALSE(flight.state().gearHandleDown);
    flight.step(3);
    EXPECT_NEAR(flight.state().gearDeployed[1], 0.5, 0.05);
    flyUntil(flight, FlightPhase::cruise);
    EXPECT_EQ(flight.state().gearDeployed[2], 0);
    EXPECT_TRUE(flight.state().autopilotServosOn);
    flyUntil(flight, FlightPhase::finalApproach);
    EXPECT_TRUE(flight.state().gearHandleDown);
    EXPECT_EQ(flight.state().gearDeployed[0], 1);
    EXPECT_FALSE(flight.state().autopilotServosOn);
}

TEST(FlightModel, EveryPhaseCanBeTheStart) {
    for (const FlightPhase phase : allFlightPhases) {
        FlightModel flight(1, phase);
        EXPECT_EQ(flight.phase(), phase);
        flight.step(1);
        EXPECT_EQ(flight.phase(), phase) << name(phase);
        const double height = heightAboveGroundM(flight.state());
        if (flight.isOnGround()) {
            EXPECT_NEAR(height, 0, 1e-6);
        } else {
            EXPECT_GT(height, 25) << name(phase);
        }
    }
}

TEST(FlightModel, AWrittenPositionHoldsItsElevationWhileTheGroundChanges) {
    FlightModel flight(1, FlightPhase::cruise);
    flight.step(200);
    ASSERT_NEAR(flight.state().upMs, 0, 0.1);
    const double elevation = flight.state().elevationM;
    flight.takeOver().latitudeDeg = 47.35;
    flight.takeOver().longitudeDeg = 9.5;
    flight.step(2);
    EXPECT_NEAR(flight.state().latitudeDeg, 47.35, 0.002);
    EXPECT_NEAR(flight.state().elevationM, elevation, 0.5);
    const double ground = terrainHeightM(flight.state().latitudeDeg, flight.state().longitudeDeg);
    EXPECT_DOUBLE_EQ(heightAboveGroundM(flight.state()), flight.state().elevationM - ground);
}

TEST(FlightModel, WrittenAttitudeAndVelocityStayForAWhileAndThenThePilotReturns) {
    FlightModel flight(1, FlightPhase::cruise);
    flight.step(200);
    auto& state = flight.takeOver();
    state.pitchDeg = 7;
    state.bankDeg = -31;
    state.upMs = 2;
    const double before = state.elevationM;
    flight.step(FlightModel::handsOffS - 0.5);
    EXPECT_EQ(flight.state().pitchDeg, 7);
    EXPECT_EQ(flight.state().bankDeg, -31);
    EXPECT_NEAR(flight.state().elevationM, before + 2 * (FlightModel::handsOffS - 0.5), 0.1);
    flight.step(30);
    EXPECT_GT(flight.state().bankDeg, -26);
    EXPECT_LT(flight.state().pitchDeg, 6);
}

TEST(FlightModel, TakingOverStopsTheTurnAndWrittenRatesTurnAgain) {
    FlightModel flight(1, FlightPhase::cruise);
    flight.step(200);
    flight.takeOver().bankDeg = 0;
    flight.takeOver().rollRate = 10;
    flight.step(1);
    EXPECT_NEAR(flight.state().bankDeg, 10, 0.01);
    EXPECT_EQ(flight.state().pitchRate, 0);
}

TEST(FlightModel, AWrittenThrottleMakesItFasterUntilThePilotTakesItBack) {
    FlightModel flight(1, FlightPhase::cruise);
    flight.step(200);
    const double before = indicatedAirspeedMs(flight.state());
    flight.takeThrottle().throttle.fill(1);
    flight.step(20);
    EXPECT_GT(indicatedAirspeedMs(flight.state()), before + 5);
    EXPECT_EQ(flight.state().throttle[0], 1);
    flight.step(FlightModel::throttleTakenS);
    EXPECT_LT(flight.state().throttle[0], 1);
}

TEST(FlightModel, IdleOnTheRunwayStandsStillUntilThePilotTakesOver) {
    FlightModel flight(1, FlightPhase::runway);
    flight.takeThrottle().throttle.fill(0);
    flight.step(20);
    EXPECT_EQ(groundSpeedMs(flight.state()), 0);
    flyUntil(flight, FlightPhase::climb);
}

TEST(FlightModel, PutFarAwayItFindsARunwayThere) {
    FlightModel flight(1, FlightPhase::cruise);
    auto& state = flight.takeOver();
    state.latitudeDeg = -33;
    state.longitudeDeg = 151;
    state.elevationM = 1500;
    flight.step(20);
    flyUntil(flight, FlightPhase::rollout);
    EXPECT_NEAR(flight.state().latitudeDeg, -33, 0.5);
    EXPECT_NEAR(heightAboveGroundM(flight.state()), 0, 0.5);
}

TEST(FlightModel, PutIntoAHillItClimbsOut) {
    FlightModel flight(1, FlightPhase::cruise);
    flight.takeOver().elevationM = 100;
    EXPECT_LT(heightAboveGroundM(flight.state()), 0);
    flight.step(200);
    EXPECT_GT(heightAboveGroundM(flight.state()), 200);
}

TEST(FlightModel, LiftedFromTheRunwayItFliesOn) {
    FlightModel flight(1, FlightPhase::runway);
    flight.takeOver().elevationM += 800;
    flight.step(FlightModel::handsOffS + 1);
    EXPECT_EQ(flight.phase(), FlightPhase::climb);
    flyUntil(flight, FlightPhase::rollout);
}

TEST(FlightModel, WildWritesNeverMakeItNonsense) {
    FlightModel flight(1, FlightPhase::finalApproach);
    for (int round = 0; round < 20; ++round) {
        auto& state = flight.takeOver();
        state.pitchDeg = 90 - 20 * round;
        state.bankDeg = 33 * round;
        state.upMs = round % 2 == 0 ? -80 : 120;
        state.eastMs = state.southMs = 0;
        state.latitudeDeg = -89 + 9 * round;
        flight.step(60);
        ASSERT_TRUE(std::isfinite(flight.state().elevationM) && std::isfinite(flight.state().headingDeg));
        ASSERT_LE(std::abs(flight.state().pitchDeg), 90);
        ASSERT_TRUE(flight.state().headingDeg >= 0 && flight.state().headingDeg < 360);
    }
}

} // namespace
} // namespace tarnly::simulator
