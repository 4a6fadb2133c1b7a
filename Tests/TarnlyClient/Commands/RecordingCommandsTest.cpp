#include <gtest/gtest.h>

#include <string>

#include "TarnlyClient/Commands/ClientRun.hpp"

namespace tarnly::client {
namespace {

using test::answering;
using test::requestOf;
using test::run;
using test::ScriptedCompanion;

TEST(RecordingCommands, StartAndStop) {
    EXPECT_EQ(requestOf({"record", "start"}), R"({"type":"recording_start","req_id":2})");
    EXPECT_EQ(requestOf({"record", "stop"}), R"({"type":"recording_stop","req_id":2})");
    const ScriptedCompanion companion(answering(R"({"ok":true})"));
    EXPECT_EQ(run(companion, {"record", "start"}).out, "ok\n");
    EXPECT_EQ(run(companion, {"record", "stop", "--json"}).out, "{\"ok\":true}\n");
}

constexpr auto recorded = R"({"samples":[{"elapsed_s":0.5,"lat":47.5,"lon":8.5,"alt_ft":1500},)"
                          R"({"elapsed_s":1,"alt_ft":1510}],)"
                          R"("fired":[{"trigger_id":"a\u0007","elapsed_s":0.5,"action_kind":"speak"}]})";

TEST(RecordingCommands, CatchUpShowsSamplesAndTriggersInOrder) {
    const ScriptedCompanion companion(answering(recorded));
    EXPECT_EQ(run(companion, {"catch-up"}).out,
              "     0.50 s   47.50000    8.50000  altitude  1500 ft  height     - ft  gear -\n"
              "     0.50 s  fired a?  (speak)\n"
              "     1.00 s          -          -  altitude  1510 ft  height     - ft  gear -\n");
}

TEST(RecordingCommands, CatchUpForProgramsHasTheFormOfTheLog) {
    const ScriptedCompanion companion(answering(recorded));
    EXPECT_EQ(run(companion, {"catch-up", "--json"}).out,
              R"({"kind":"sample","sample":{"elapsed_s":0.5,"lat":47.5,"lon":8.5,"alt_ft":1500}})"
              "\n"
              R"({"kind":"fired","fired":{"trigger_id":"a\u0007","elapsed_s":0.5,"action_kind":"speak"}})"
              "\n"
              R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":1510}})"
              "\n");
}

TEST(RecordingCommands, CatchUpAsksForWhatLiesAfterATime) {
    const std::string nothing = R"({"samples":[],"fired":[]})";
    EXPECT_EQ(requestOf({"catch-up"}, nothing), R"({"type":"catch_up","req_id":2,"params":{}})");
    EXPECT_EQ(requestOf({"catch-up", "--since", "-.5"}, nothing),
              R"({"type":"catch_up","req_id":2,"params":{"since_elapsed_s":-0.5}})");
}

} // namespace
} // namespace tarnly::client
