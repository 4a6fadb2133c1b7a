#include "TarnlyTrack/Replay/ReplayFlight.hpp"

#include <gmock/gmock.h>

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "Support/VirtualClock.hpp"
#include "TarnlySimulator/Simulator.hpp"
#include "TarnlySimulator/World/WorldError.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {
namespace {

using namespace std::chrono_literals;
using simulator::Dataref;
using simulator::Value;
using simulator::ValueType;
using simulator::World;
using simulator::WorldOptions;
using testing::ElementsAre;
using Numbers = std::vector<double>;

constexpr auto altitude = "sim/flightmodel/misc/h_ind";
constexpr auto paused = "sim/time/paused";
constexpr auto throttle = "sim/cockpit2/engine/actuators/throttle_ratio_all";
constexpr auto gearHandle = "sim/cockpit2/controls/gear_handle_down";

/// Climbs a foot a second, from 1000 feet.
std::string sampleAt(double seconds, const std::string& more = "") {
    return R"({"kind":"sample","sample":{"elapsed_s":)" + std::to_string(seconds) + R"(,"alt_ft":)" +
           std::to_string(1000 + seconds) + more + "}}\n";
}

std::unique_ptr<ReplayFlight> replayOf(const std::string& log, ReplayOptions options = {}) {
    FlightLogReader reader;
    reader.add(log);
    return std::make_unique<ReplayFlight>(RecordedFlight(reader.finish()), std::move(options));
}

/// Ten seconds.
std::string shortFlight() {
    std::string log;
    for (int second = 0; second <= 10; ++second)
        log += sampleAt(second);
    return log;
}

const Dataref& named(const World& world, std::string_view name) { return *world.datarefs().named(name); }

Value valueOf(const World& world, std::string_view name) { return world.read(named(world, name)); }

double numberOf(const World& world, std::string_view name) { return std::get<double>(valueOf(world, name)); }

void run(World& world, std::string_view command) { world.activate(world.commands().named(command)->id); }

TEST(ReplayFlightTest, ServesAllThatARecordingHas) {
    const World world(
        {}, replayOf(sampleAt(0, R"(,"lat":47.5,"lon":8.5,"agl_ft":328.084,"gear_down":true,)"
                                 R"("throttle_ratio":[0.5,0.75],"mixture_ratio":[0.9],"prop_ratio":[1],)"
                                 R"("flap_ratio":0.25,"gear_ratio":0.5,"bank_deg":-3,"pitch_deg":2,)"
                                 R"("autopilot_on":false)")));
    EXPECT_EQ(numberOf(world, "sim/flightmodel/position/latitude"), 47.5);
    EXPECT_EQ(numberOf(world, "sim/flightmodel/position/longitude"), 8.5);
    EXPECT_EQ(numberOf(world, altitude), 1000);
    EXPECT_NEAR(numberOf(world, "sim/flightmodel/position/y_agl"), 100, 1e-4);
    EXPECT_EQ(numberOf(world, "sim/flightmodel/position/phi"), -3);
    EXPECT_EQ(numberOf(world, "sim/flightmodel/position/theta"), 2);
    EXPECT_EQ(numberOf(world, gearHandle), 1);
    EXPECT_EQ(valueOf(world, "sim/flightmodel2/gear/deploy_ratio"), Value(Numbers{0.5, 0.5, 0.5}));
    EXPECT_EQ(numberOf(world, "sim/cockpit2/controls/flap_ratio"), 0.25);
    EXPECT_EQ(numberOf(world, "sim/cockpit2/controls/flap_handle_request_ratio"), 0.25);
    EXPECT_EQ(numberOf(world, "sim/cockpit2/autopilot/servos_on"), 0);
    EXPECT_EQ(valueOf(world, throttle), Value(Numbers{0.5, 0.75}));
    EXPECT_EQ(named(world, throttle).type, ValueType::singles);
    EXPECT_EQ(numberOf(world, "sim/cockpit2/engine/actuators/mixture_ratio_all"), 0.9);
    EXPECT_EQ(numberOf(world, "sim/cockpit2/engine/actuators/prop_ratio_all"), 1);
}

TEST(ReplayFlightTest, WhatARecordingDoesNotTellIsNotThere) {
    const World world({}, replayOf(sampleAt(0)));
    std::vector<std::string> names;
    for (const auto& dataref : world.datarefs().entries())
        names.push_back(dataref.name);
    EXPECT_THAT(names, ElementsAre(altitude, "sim/flightmodel/position/vh_ind_fpm",
                                   "sim/time/total_flight_time_sec", paused));
}

TEST(ReplayFlightTest, AValueThatIsNotKnownForAWhileIsNone) {
    World world({}, replayOf(sampleAt(0, R"(,"gear_down":true,"throttle_ratio":[0.5,1])") + sampleAt(1) +
                             sampleAt(2)));
    EXPECT_EQ(numberOf(world, gearHandle), 1);
    world.advance(1);
    EXPECT_TRUE(std::isnan(numberOf(world, gearHandle)));
    const auto levers = std::get<Numbers>(valueOf(world, throttle));
    EXPECT_TRUE(levers.size() == 2 && std::isnan(levers[0]) && std::isnan(levers[1]));
}

TEST(ReplayFlightTest, GoesOnWithTheClockAtItsSpeed) {
    std::string log;
    for (int half = 0; half <= 200; ++half)
        log += sampleAt(half / 2.0);
    boost::asio::io_context io;
    test::VirtualClock clock;
    simulator::SimulatorOptions options;
    options.port = options.udpPort = 0;
    options.speed = 20;
    simulator::Simulator simulator(io.get_executor(), clock, options, replayOf(log));
    clock.advance(io, 1s);
    EXPECT_NEAR(numberOf(simulator.world(), altitude), 1020, 1e-6);
    EXPECT_NEAR(numberOf(simulator.world(), "sim/time/total_flight_time_sec"), 20, 1e-6);
    clock.advance(io, 100ms);
    EXPECT_NEAR(numberOf(simulator.world(), altitude), 1022, 1e-6);
}

TEST(ReplayFlightTest, AtItsEndTheLastValuesStayAndItIsSaidOnce) {
    int ends = 0;
    World world({}, replayOf(shortFlight(), {.onEnd = [&] { ++ends; }}));
    world.advance(9.9);
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(world.flight().phase(), "replay");
    EXPECT_EQ(numberOf(world, paused), 0);
    for (int tick = 0; tick < 3; ++tick)
        world.advance(0.2);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(world.flight().phase(), "ended");
    EXPECT_EQ(numberOf(world, altitude), 1010);
    EXPECT_EQ(numberOf(world, paused), 1);
}

TEST(ReplayFlightTest, BeginsWhereItIsToldAndRepeatsFromThere) {
    int ends = 0;
    World world({}, replayOf(shortFlight(), {.from = 4, .isRepeated = true, .onEnd = [&] { ++ends; }}));
    EXPECT_EQ(numberOf(world, altitude), 1004);
    world.advance(7);
    EXPECT_EQ(numberOf(world, altitude), 1010) << "the last values are seen";
    EXPECT_EQ(numberOf(world, paused), 0);
    world.advance(0.1);
    EXPECT_EQ(numberOf(world, altitude), 1004);
    world.advance(1);
    EXPECT_EQ(numberOf(world, altitude), 1005);
    EXPECT_EQ(ends, 0);
}

TEST(ReplayFlightTest, CannotBeFlown) {
    World world({}, replayOf(sampleAt(0, R"(,"gear_down":true,"throttle_ratio":[0.5])") + sampleAt(1)));
    for (const auto& dataref : world.datarefs().entries())
        EXPECT_THROW(world.write(dataref.id, 0.25, std::nullopt), simulator::WorldError) << dataref.name;
    for (const auto& command : world.commands().entries()) {
        if (command.name.find("pause") == std::string::npos) world.activate(command.id);
    }
    EXPECT_EQ(numberOf(world, gearHandle), 1);
    EXPECT_EQ(numberOf(world, throttle), 0.5);
    EXPECT_FALSE(world.loadSituation("final.sit"));
    EXPECT_EQ(numberOf(world, altitude), 1000);
}

TEST(ReplayFlightTest, ClientsMayPauseItAndBeginItAnew) {
    World world({}, replayOf(shortFlight(), {.isPaused = true}));
    world.advance(3);
    EXPECT_EQ(numberOf(world, altitude), 1000);
    EXPECT_EQ(numberOf(world, paused), 1);
    run(world, "sim/operation/pause_off");
    world.advance(3);
    EXPECT_EQ(numberOf(world, altitude), 1003);
    run(world, "sim/operation/pause_toggle");
    world.advance(3);
    EXPECT_EQ(numberOf(world, altitude), 1003);
    run(world, "sim/operation/pause_toggle");
    world.advance(100);
    EXPECT_EQ(world.flight().phase(), "ended");
    run(world, "sim/operation/reset_flight");
    EXPECT_EQ(numberOf(world, altitude), 1000);
    EXPECT_EQ(numberOf(world, paused), 0);
    world.advance(2);
    EXPECT_EQ(numberOf(world, altitude), 1002);
}

TEST(ReplayFlightTest, AStretchThatWasPausedShowsAsPaused) {
    std::string log;
    for (int second = 0; second <= 10; ++second) {
        log += R"({"kind":"sample","sample":{"elapsed_s":)" + std::to_string(second) +
               R"(,"lat":1,"lon":2,"alt_ft":)" + (second < 8 ? "100" : "200") + "}}\n";
    }
    World world({}, replayOf(log));
    world.advance(6.5);
    EXPECT_EQ(numberOf(world, paused), 1);
    world.advance(1);
    EXPECT_EQ(numberOf(world, paused), 0);
}

} // namespace
} // namespace tarnly::track
