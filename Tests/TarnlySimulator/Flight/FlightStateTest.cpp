#include "TarnlySimulator/Flight/FlightState.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tarnly::simulator {
namespace {

TEST(FlightPhase, EveryNameLeadsBackToItsPhase) {
    for (const FlightPhase phase : allFlightPhases)
        EXPECT_EQ(flightPhaseNamed(name(phase)), phase);
    EXPECT_EQ(flightPhaseNamed("final"), FlightPhase::finalApproach);
    EXPECT_EQ(flightPhaseNamed("Final"), std::nullopt);
    EXPECT_EQ(flightPhaseNamed(""), std::nullopt);
}

TEST(FlightPhase, SituationNamesChooseThePhaseTheyMention) {
    EXPECT_EQ(flightPhaseOfSituation("Final 09.sit"), FlightPhase::finalApproach);
    EXPECT_EQ(flightPhaseOfSituation("left DOWNWIND.sit"), FlightPhase::downwind);
}

TEST(FlightPhase, OtherSituationNamesChooseOnePhaseEach) {
    EXPECT_EQ(flightPhaseOfSituation("Pattern 1.sit"), flightPhaseOfSituation("Pattern 1.sit"));
    std::set<FlightPhase> seen;
    for (int number = 0; number < 100; ++number)
        seen.insert(flightPhaseOfSituation("Pattern " + std::to_string(number) + ".sit"));
    EXPECT_EQ(seen.size(), allFlightPhases.size());
}

} // namespace
} // namespace tarnly::simulator
