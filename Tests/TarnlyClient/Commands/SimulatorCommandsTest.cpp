#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarnlyClient/Commands/ClientRun.hpp"

namespace tarnly::client {
namespace {

using test::answering;
using test::paired;
using test::requestOf;
using test::run;
using test::ScriptedCompanion;
using Request = boost::json::object;
using Answers = std::vector<std::string>;

TEST(SimulatorCommands, GetAsksForAllNamesAtOnce) {
    const ScriptedCompanion companion(answering(R"({"a":1.5,"b":-2})"));
    const auto outcome = run(companion, {"get", "b", "a"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "b=-2\na=1.5\n");
    EXPECT_EQ(
        companion.received().back(),
        R"({"type":"dataref_subscribe_values","req_id":2,"params":{"datarefs":[{"name":"b"},{"name":"a"}]}})");
}

TEST(SimulatorCommands, ANameMayBeThatOfASubcommand) {
    EXPECT_EQ(requestOf({"run", "info"}), R"({"type":"run_command","req_id":2,"params":{"name":"info"}})");
    EXPECT_EQ(requestOf({"get", "set"}, R"({"set":1})"),
              R"({"type":"dataref_subscribe_values","req_id":2,"params":{"datarefs":[{"name":"set"}]}})");
}

TEST(SimulatorCommands, SetSendsElementsWithTheirIndex) {
    EXPECT_EQ(requestOf({"set", "a=-1.5", "b[0]=2", "--json"}),
              R"({"type":"dataref_set_values","req_id":2,"params":{"datarefs":[{"name":"a","value":-1.5},)"
              R"({"name":"b","value":2,"index":0}]}})");
}

TEST(SimulatorCommands, MoveTakesNegativeDegrees) {
    EXPECT_EQ(requestOf({"move", "-33.9", "-.5"}),
              R"({"type":"move_to_preserving_agl","req_id":2,"params":{"lat":-33.9,"lon":-0.5}})");
}

TEST(SimulatorCommands, TheEndsOfARangeBelongToIt) {
    EXPECT_EQ(requestOf({"move", "-90", "180"}),
              R"({"type":"move_to_preserving_agl","req_id":2,"params":{"lat":-90,"lon":180}})");
    EXPECT_EQ(requestOf({"attitude", "90", "-180", "0", "1"}),
              R"({"type":"apply_attitude","req_id":2,)"
              R"("params":{"pitch_deg":90,"bank_deg":-180,"ias_kts":0,"throttle":1}})");
}

TEST(SimulatorCommands, AttitudeTakesNegativeDegrees) {
    EXPECT_EQ(requestOf({"attitude", "-5", "-1e1", "120", "0.5"}),
              R"({"type":"apply_attitude","req_id":2,)"
              R"("params":{"pitch_deg":-5,"bank_deg":-10,"ias_kts":120,"throttle":0.5}})");
}

TEST(SimulatorCommands, SuccessIsSaid) {
    const ScriptedCompanion companion(answering(R"({"ok":true})"));
    EXPECT_EQ(run(companion, {"run", "c"}).out, "ok\n");
    EXPECT_EQ(run(companion, {"--json", "run", "c"}).out, "{\"ok\":true}\n");
}

constexpr auto twoFlights =
    R"({"flights":[{"name":"Pattern 1","path":"\/s\/Pattern 1.sit","modified_at":0.5},)"
    R"({"name":"Final","path":"\/s\/Final.sit","modified_at":86400}]})";

/// A companion with two saved flights, which loads each.
ScriptedCompanion::Script withFlights() {
    return paired([](const Request& request) {
        const bool isList = request.at("type") == "list_flights";
        return Answers{ScriptedCompanion::reply(request, isList ? twoFlights : R"({"ok":true})")};
    });
}

TEST(FlightCommands, FlightsAreListed) {
    const ScriptedCompanion companion(answering(twoFlights));
    EXPECT_EQ(run(companion, {"flights"}).out,
              "Pattern 1  2001-01-01 00:00:00  /s/Pattern 1.sit\nFinal  2001-01-02 00:00:00  /s/Final.sit\n");
    EXPECT_EQ(run(companion, {"flights", "--json"}).out,
              R"({"name":"Pattern 1","path":"\/s\/Pattern 1.sit","modified_at":0.5})"
              "\n"
              R"({"name":"Final","path":"\/s\/Final.sit","modified_at":86400})"
              "\n");
    EXPECT_EQ(companion.received().back(), R"({"type":"list_flights","req_id":2})");
}

TEST(FlightCommands, AFlightIsLoadedByItsName) {
    const ScriptedCompanion companion(withFlights());
    const auto outcome = run(companion, {"load", "Final"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "ok\n");
    EXPECT_EQ(companion.received().back(),
              R"({"type":"load_flight","req_id":3,"params":{"path":"\/s\/Final.sit"}})");
}

TEST(FlightCommands, APathIsTakenAsItIs) {
    EXPECT_EQ(requestOf({"load", "/t/Other.sit"}),
              R"({"type":"load_flight","req_id":2,"params":{"path":"\/t\/Other.sit"}})");
}

TEST(FlightCommands, AnUnknownNameLoadsNothing) {
    const ScriptedCompanion companion(withFlights());
    const auto outcome = run(companion, {"load", "final"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err,
              "tarnly-client: no flight is named \"final\"; flights lists those that are there\n");
    EXPECT_EQ(companion.received().size(), 2U);
}

} // namespace
} // namespace tarnly::client
