#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyClient/Commands/ClientRun.hpp"

namespace tarnly::client {
namespace {

using testing::StartsWith;

using test::answering;
using test::requestOf;
using test::ScriptedCompanion;

constexpr auto run = test::runClientOn;

class ScriptCommand : public testing::Test {
  public:
    const test::TemporaryFolder folder;
    const std::string file =
        folder
            .write("lesson.json", R"([{"id":"a","condition_kind":"after_start","condition":{"seconds":1},)"
                                  R"("action_kind":"speak","action":{}}])")
            .string();
};

TEST_F(ScriptCommand, SendsTheTriggers) {
    EXPECT_EQ(
        requestOf({"script", file}, R"({"unresolved_fixes":[]})"),
        R"({"type":"load_script","req_id":2,"params":{"triggers":[{"id":"a",)"
        R"("condition_kind":"after_start","condition":{"seconds":1},"action_kind":"speak","action":{}}]}})");
}

TEST_F(ScriptCommand, AScriptWhoseFixesAreKnownIsOk) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":[]})"));
    const auto outcome = run(companion, {"script", file});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "ok\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(ScriptCommand, WarnsOfUnknownFixes) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":["XYZZY","A\u001bB"]})"));
    const auto outcome = run(companion, {"script", file});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "ok\n");
    EXPECT_EQ(outcome.err,
              "tarnly-client: warning: the companion does not know these fixes, whose triggers will never "
              "fire: XYZZY, A?B\n");
    const auto forPrograms = run(companion, {"script", file, "--json"});
    EXPECT_EQ(forPrograms.out, "{\"unresolved_fixes\":[\"XYZZY\",\"A\\u001bB\"]}\n");
    EXPECT_EQ(forPrograms.err, "");
}

TEST_F(ScriptCommand, AFileThatIsNoScriptIsNotSent) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":[]})"));
    const auto wrong = folder.write("wrong.json", "[{]").string();
    const auto outcome = run(companion, {"script", wrong});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, StartsWith("tarnly-client: the script " + wrong + ", line 1: no valid JSON: "));
    EXPECT_EQ(companion.received().size(), 0U);
}

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
