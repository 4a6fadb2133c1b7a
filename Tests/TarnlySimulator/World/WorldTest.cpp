#include "TarnlySimulator/World/World.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "TarnlySimulator/Flight/Globe.hpp"
#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using namespace std::chrono_literals;
using test::commandId;
using test::datarefId;
using test::numberOf;
using test::standInOptions;
using test::valueOf;
using test::writeNumber;
using Numbers = std::vector<double>;

constexpr auto throttle = "sim/cockpit2/engine/actuators/throttle_ratio_all";
constexpr auto gearHandle = "sim/cockpit2/controls/gear_handle_down";
constexpr auto landingLights = "sim/cockpit2/switches/landing_lights_on";

std::string position(const char* name) { return std::string("sim/flightmodel/position/") + name; }

std::string codeOfWriting(World& world, std::int64_t id, const boost::json::value& value) {
    try {
        world.write(id, value, std::nullopt);
    } catch (const WorldError& error) {
        return test::codeOf(error);
    }
    return "accepted";
}

TEST(World, WritingThePositionMovesTheAircraftAndItsHeightFollowsTheTerrain) {
    World world(standInOptions());
    writeNumber(world, position("latitude"), 46.5);
    writeNumber(world, position("longitude"), 10.25);
    writeNumber(world, position("elevation"), 1234);
    EXPECT_EQ(numberOf(world, position("latitude")), 46.5);
    EXPECT_EQ(numberOf(world, position("longitude")), 10.25);
    EXPECT_DOUBLE_EQ(numberOf(world, position("y_agl")), 1234 - terrainHeightM(46.5, 10.25));
    EXPECT_NEAR(numberOf(world, "sim/flightmodel/misc/h_ind"), 4048.56, 0.01);
}

TEST(World, WritingAttitudeAndVelocityChangesTheFlight) {
    World world(standInOptions());
    writeNumber(world, position("theta"), 5);
    writeNumber(world, position("phi"), -20);
    writeNumber(world, position("psi"), 0);
    writeNumber(world, position("local_vx"), 0);
    writeNumber(world, position("local_vy"), 3);
    writeNumber(world, position("local_vz"), -60);
    const double latitude = numberOf(world, position("latitude"));
    const double elevation = numberOf(world, position("elevation"));
    world.advance(5);
    EXPECT_EQ(numberOf(world, position("theta")), 5);
    EXPECT_EQ(numberOf(world, position("phi")), -20);
    EXPECT_NEAR(numberOf(world, position("elevation")), elevation + 15, 0.1);
    EXPECT_NEAR((numberOf(world, position("latitude")) - latitude) * metresPerDegree, 300, 2);
    EXPECT_NEAR(numberOf(world, position("groundspeed")), 60, 1e-9);
    EXPECT_NEAR(numberOf(world, position("vh_ind_fpm")), 590.55, 0.1);
    EXPECT_EQ(numberOf(world, position("hpath")), 0);
}

TEST(World, WildPositionsAreBroughtOntoTheGlobe) {
    World world(standInOptions());
    writeNumber(world, position("latitude"), 1e9);
    writeNumber(world, position("longitude"), 190);
    writeNumber(world, position("psi"), -10);
    EXPECT_LE(numberOf(world, position("latitude")), 90);
    EXPECT_EQ(numberOf(world, position("longitude")), -170);
    EXPECT_EQ(numberOf(world, position("psi")), 350);
}

TEST(World, LeversAreWrittenAsAWholeOrOneByOneAndStayWithinTheirRange) {
    World world(standInOptions());
    const auto engines = [&] {
        auto numbers = std::get<Numbers>(valueOf(world, "sim/cockpit2/engine/actuators/throttle_ratio"));
        EXPECT_EQ(numbers.size(), 16u);
        numbers.resize(3);
        return numbers;
    };
    writeNumber(world, throttle, 0.4);
    EXPECT_EQ(numberOf(world, throttle), 0.4);
    EXPECT_EQ(engines(), (Numbers{0.4, 0.4, 0}));
    world.write(datarefId(world, "sim/cockpit2/engine/actuators/throttle_ratio"), 7, 1);
    EXPECT_EQ(engines(), (Numbers{0.4, 1, 0}));
    EXPECT_EQ(numberOf(world, throttle), 0.7);
}

TEST(World, TheGearTakesItsTimeAfterTheHandle) {
    World world(standInOptions());
    EXPECT_EQ(valueOf(world, "sim/flightmodel2/gear/deploy_ratio"), Value(Numbers{0, 0, 0}));
    writeNumber(world, gearHandle, 1);
    EXPECT_EQ(numberOf(world, gearHandle), 1);
    world.advance(7);
    EXPECT_EQ(valueOf(world, "sim/flightmodel2/gear/deploy_ratio"), Value(Numbers{1, 1, 1}));
}

TEST(World, RefusesReadOnlyAndUnknownDatarefs) {
    World world(standInOptions());
    EXPECT_EQ(codeOfWriting(world, datarefId(world, position("y_agl")), 1), "dataref_is_readonly");
    EXPECT_EQ(codeOfWriting(world, datarefId(world, "sim/time/paused"), 1), "dataref_is_readonly");
    EXPECT_EQ(codeOfWriting(world, 1, 1), "invalid_dataref_id");
    EXPECT_EQ(codeOfWriting(world, datarefId(world, throttle), "x"), "invalid_value");
}

struct Effect {
    const char* command;
    const char* dataref;
    double before;
    double after;
};

void PrintTo(const Effect& effect, std::ostream* out) { *out << effect.command; }

class ActingCommand : public testing::TestWithParam<Effect> {};

TEST_P(ActingCommand, ChangesItsDataref) {
    World world(standInOptions());
    const auto [command, dataref, before, after] = GetParam();
    writeNumber(world, dataref, before);
    world.activate(commandId(world, command));
    const Value value = valueOf(world, dataref);
    const auto* numbers = std::get_if<Numbers>(&value);
    EXPECT_NEAR(numbers != nullptr ? numbers->at(1) : std::get<double>(value), after, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ActingCommand,
    testing::Values(Effect{"sim/lights/landing_lights_toggle", landingLights, 0, 1},
                    Effect{"sim/lights/landing_lights_toggle", landingLights, 1, 0},
                    Effect{"sim/flight_controls/landing_gear_down", gearHandle, 0, 1},
                    Effect{"sim/flight_controls/landing_gear_up", gearHandle, 1, 0},
                    Effect{"sim/flight_controls/landing_gear_toggle", gearHandle, 0, 1},
                    Effect{"sim/flight_controls/flaps_down", "sim/cockpit2/controls/flap_ratio", 0.5, 0.75},
                    Effect{"sim/flight_controls/flaps_up", "sim/cockpit2/controls/flap_ratio", 0, 0},
                    Effect{"sim/engines/throttle_up", throttle, 0.5, 0.55},
                    Effect{"sim/autopilot/servos_on", "sim/cockpit2/autopilot/servos_on", 0, 1}));

TEST(World, EveryCommandOfTheListCanBeActivated) {
    World world(standInOptions());
    for (const Command& command : world.commands().entries())
        world.activate(command.id);
    EXPECT_THROW(world.activate(1), WorldError);
}

TEST(World, StandsStillWhilePausedAndAtTheMainMenu) {
    World world(standInOptions());
    const double latitude = numberOf(world, position("latitude"));
    world.activate(commandId(world, "sim/operation/pause_toggle"));
    EXPECT_EQ(numberOf(world, "sim/time/paused"), 1);
    world.advance(5);
    EXPECT_EQ(numberOf(world, position("latitude")), latitude);
    world.activate(commandId(world, "sim/operation/pause_toggle"));
    world.quirks.mainMenu = true;
    world.advance(5);
    EXPECT_EQ(numberOf(world, position("latitude")), latitude);
    world.quirks.mainMenu = false;
    world.advance(5);
    EXPECT_NE(numberOf(world, position("latitude")), latitude);
}

TEST(World, SpeedMakesSimulatedTimePassFaster) {
    auto options = standInOptions();
    options.speed = 8;
    World world(options);
    world.advance(2);
    EXPECT_NEAR(numberOf(world, "sim/time/total_running_time_sec"), 16, 1e-6);
    EXPECT_NEAR(numberOf(world, "sim/time/zulu_time_sec"), 43216, 1e-6);
}

TEST(World, AtTheMainMenuNoDatarefShows) {
    auto options = standInOptions();
    options.quirks.mainMenu = true;
    World world(options);
    const auto id = datarefId(world, gearHandle);
    EXPECT_EQ(world.shownDataref(id), nullptr);
    EXPECT_EQ(codeOfWriting(world, id, 1), "invalid_dataref_id");
    world.quirks.mainMenu = false;
    EXPECT_NE(world.shownDataref(id), nullptr);
}

TEST(World, AddOnDatarefsComeWhenTheirTimeHasCome) {
    auto options = standInOptions();
    options.lateDatarefsAfter = 3s;
    options.speed = 100; // of the flight, not of the add-ons
    World world(options);
    const auto id = datarefId(world, "addon/twin/systems_0/state_07");
    for (int tenth = 0; tenth < 29; ++tenth)
        world.advance(0.1);
    EXPECT_EQ(world.shownDataref(id), nullptr);
    world.advance(0.1);
    EXPECT_NE(world.shownDataref(id), nullptr);
}

TEST(World, AnotherAircraftsAddOnsComeLateUnderTheirIds) {
    World world(standInOptions());
    const auto id = datarefId(world, "addon/twin/systems_0/state_07");
    const auto handle = datarefId(world, gearHandle);
    world.changeAircraft(2s);
    EXPECT_EQ(world.shownDataref(id), nullptr);
    EXPECT_NE(world.shownDataref(handle), nullptr);
    world.advance(1.9);
    EXPECT_EQ(world.shownDataref(id), nullptr);
    world.advance(0.1);
    EXPECT_NE(world.shownDataref(id), nullptr);
}

TEST(World, TheGearCommandsCanExchangeTheirIdsAlone) {
    World world(standInOptions());
    const auto generation = world.idGeneration();
    const auto up = commandId(world, "sim/flight_controls/landing_gear_up");
    const auto down = commandId(world, "sim/flight_controls/landing_gear_down");
    const auto other = commandId(world, "sim/flight_controls/flaps_up");
    const auto handle = datarefId(world, gearHandle);
    world.swapGearCommands();
    EXPECT_NE(world.idGeneration(), generation);
    EXPECT_EQ(commandId(world, "sim/flight_controls/landing_gear_up"), down);
    EXPECT_EQ(commandId(world, "sim/flight_controls/flaps_up"), other);
    EXPECT_EQ(datarefId(world, gearHandle), handle);
    world.activate(up);
    EXPECT_EQ(numberOf(world, gearHandle), 1);
}

TEST(World, TheFlightCanBeginAnew) {
    World world(standInOptions());
    world.loadSituation("final.sit");
    world.quirks.mainMenu = true;
    world.beginAnew();
    EXPECT_FALSE(world.quirks.mainMenu);
    EXPECT_EQ(world.flight().phase(), "cruise");
}

TEST(World, ASituationLeavesTheMainMenuAndJumpsToItsPhase) {
    World world(standInOptions());
    world.quirks.mainMenu = true;
    world.loadSituation("Output/situations/Short final.sit");
    EXPECT_FALSE(world.quirks.mainMenu);
    EXPECT_EQ(world.flight().phase(), "final");
}

TEST(World, OnlyTheNameOfASituationChoosesThePhase) {
    World world(standInOptions());
    world.loadSituation("base/climb.sit");
    EXPECT_EQ(world.flight().phase(), "climb");
    world.loadSituation("climb.sit");
    EXPECT_EQ(world.flight().phase(), "climb");
}

TEST(World, ResettingTheFlightGoesBackToItsStart) {
    World world(standInOptions());
    world.loadSituation("final.sit");
    world.activate(commandId(world, "sim/operation/reset_flight"));
    EXPECT_EQ(world.flight().phase(), "cruise");
}

TEST(World, NonFiniteValuesOnRequest) {
    World world(standInOptions());
    world.quirks.nonFinite = true;
    EXPECT_TRUE(std::isinf(numberOf(world, position("y_agl"))));
    EXPECT_TRUE(std::isnan(numberOf(world, "sim/flightmodel/misc/h_ind")));
    world.quirks.nonFinite = false;
    EXPECT_TRUE(std::isfinite(numberOf(world, position("y_agl"))));
}

TEST(World, IdsFollowFromTheirSeedAndChangeWithIt) {
    World one(standInOptions());
    World same(standInOptions());
    EXPECT_EQ(datarefId(one, throttle), datarefId(same, throttle));
    const auto before = datarefId(one, throttle);
    one.drawIds(43);
    EXPECT_NE(datarefId(one, throttle), before);
    EXPECT_EQ(one.shownDataref(before), nullptr);
}

TEST(World, WithoutAnIdSeedEveryRunHasOtherIds) {
    auto options = standInOptions();
    options.idSeed.reset();
    EXPECT_NE(datarefId(World(options), throttle), datarefId(World(options), throttle));
}

} // namespace
} // namespace tarnly::simulator
