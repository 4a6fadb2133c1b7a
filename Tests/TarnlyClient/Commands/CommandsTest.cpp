#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <sstream>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyClient/Commands/ClientRun.hpp"

namespace tarnly::client {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using test::answering;
using test::paired;
using test::requestOf;
using test::ScriptedCompanion;
using Request = boost::json::object;
using Answers = std::vector<std::string>;

constexpr auto run = test::runClientOn;

TEST(Commands, InfoShowsTheSimulator) {
    const ScriptedCompanion companion(answering(R"({"sim":"xplane","version":"12.1"})"));
    EXPECT_EQ(run(companion, {"info"}).out, "xplane 12.1\n");
    EXPECT_EQ(run(companion, {"info", "--json"}).out, "{\"sim\":\"xplane\",\"version\":\"12.1\"}\n");
    EXPECT_THAT(
        companion.received(),
        ElementsAre(R"({"type":"pair","req_id":1,"params":{}})", R"({"type":"sim_info","req_id":2})",
                    R"({"type":"pair","req_id":1,"params":{}})", R"({"type":"sim_info","req_id":2})"));
}

TEST(Commands, GetAsksForAllNamesAtOnce) {
    const ScriptedCompanion companion(answering(R"({"a":1.5,"b":-2})"));
    const auto outcome = run(companion, {"get", "b", "a"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "b=-2\na=1.5\n");
    EXPECT_EQ(
        companion.received().back(),
        R"({"type":"dataref_subscribe_values","req_id":2,"params":{"datarefs":[{"name":"b"},{"name":"a"}]}})");
}

TEST(Commands, ANameMayBeThatOfASubcommand) {
    EXPECT_EQ(requestOf({"run", "info"}), R"({"type":"run_command","req_id":2,"params":{"name":"info"}})");
    EXPECT_EQ(requestOf({"get", "set"}, R"({"set":1})"),
              R"({"type":"dataref_subscribe_values","req_id":2,"params":{"datarefs":[{"name":"set"}]}})");
}

TEST(Commands, SetSendsElementsWithTheirIndex) {
    EXPECT_EQ(requestOf({"set", "a=-1.5", "b[0]=2", "--json"}),
              R"({"type":"dataref_set_values","req_id":2,"params":{"datarefs":[{"name":"a","value":-1.5},)"
              R"({"name":"b","value":2,"index":0}]}})");
}

TEST(Commands, MoveTakesNegativeDegrees) {
    EXPECT_EQ(requestOf({"move", "-33.9", "-.5"}),
              R"({"type":"move_to_preserving_agl","req_id":2,"params":{"lat":-33.9,"lon":-0.5}})");
}

TEST(Commands, AttitudeTakesNegativeDegrees) {
    EXPECT_EQ(requestOf({"attitude", "-5", "-1e1", "120", "0.5"}),
              R"({"type":"apply_attitude","req_id":2,)"
              R"("params":{"pitch_deg":-5,"bank_deg":-10,"ias_kts":120,"throttle":0.5}})");
}

TEST(Commands, SuccessIsSaid) {
    const ScriptedCompanion companion(answering(R"({"ok":true})"));
    EXPECT_EQ(run(companion, {"run", "c"}).out, "ok\n");
    EXPECT_EQ(run(companion, {"--json", "run", "c"}).out, "{\"ok\":true}\n");
}

TEST(Commands, SendPrintsTheAnswerAsItIs) {
    const ScriptedCompanion companion(paired([](const Request&) {
        return Answers{ScriptedCompanion::push("{}"), R"({"type":"other","req_id":1})",
                       R"( {"req_id":7, "type":"x"})"};
    }));
    EXPECT_EQ(run(companion, {"send", R"({"type":"x","req_id":7})"}).out,
              " {\"req_id\":7, \"type\":\"x\"}\n");
    EXPECT_EQ(companion.received().back(), R"({"type":"x","req_id":7})");
}

TEST(Commands, WatchPrintsPushesUpToTheCount) {
    const ScriptedCompanion companion(paired([](const Request& request) {
        return Answers{ScriptedCompanion::push(R"({"a":0,"b":0})"),
                       ScriptedCompanion::reply(request, R"({"a":9,"b":9})"),
                       ScriptedCompanion::push(R"({"a":1,"b":2})"),
                       ScriptedCompanion::push(R"({"a":3,"b":4})")};
    }));
    const auto outcome = run(companion, {"watch", "b", "a", "--count", "2"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "b=0 a=0\nb=2 a=1\n");
}

TEST(Commands, WatchEndsWhenItsTimeIsOver) {
    const ScriptedCompanion companion(answering(R"({"a":1})"));
    const auto outcome = run(companion, {"watch", "a", "--seconds", "0.05"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
}

TEST(Commands, AnInterruptEndsAWatchInOrder) {
    const ScriptedCompanion companion(paired([](const Request& request) {
        ::kill(::getpid(), SIGINT);
        return Answers{ScriptedCompanion::reply(request, R"({"a":1})")};
    }));
    const auto outcome = run(companion, {"watch", "a"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
}

TEST(Commands, AnInterruptWhileTheCompanionIsSilentEndsAWatchInOrder) {
    const ScriptedCompanion companion([](const Request&) {
        ::kill(::getpid(), SIGINT);
        return Answers{};
    });
    const auto outcome = run(companion, {"watch", "a"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
}

TEST(Commands, ARefusalIsToldInTheCompanionsWords) {
    const ScriptedCompanion companion(paired([](const Request& request) {
        return Answers{ScriptedCompanion::error(request, R"(unknownDataref(\"x\"))")};
    }));
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"get", "x"},
                                                      {"watch", "x"},
                                                      {"set", "x=1"},
                                                      {"send", R"({"type":"x"})"}}) {
        const auto outcome = run(companion, arguments);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "tarnly-client: unknownDataref(\"x\")\n");
    }
}

TEST(Commands, ThePasswordIsThatOfTheFile) {
    const ScriptedCompanion companion(answering(R"({"sim":"xplane","version":"1"})"));
    const test::TemporaryFolder folder;
    const auto file = folder.write("password", "secret\n");
    EXPECT_EQ(run(companion, {"--password-file", file.string(), "info"}).exitCode, 0);
    EXPECT_EQ(companion.received().front(), R"({"type":"pair","req_id":1,"params":{"password":"secret"}})");
}

TEST(Commands, ARefusedPairingEndsAll) {
    const ScriptedCompanion companion([](const Request& request) {
        return Answers{
            ScriptedCompanion::reply(request, R"({"accepted":false,"reason":"incorrect password"})")};
    });
    const auto outcome = run(companion, {"info"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err,
              "tarnly-client: the companion refuses to pair: incorrect password; "
              "it may want a password: --password-file FILE\n");
    EXPECT_EQ(companion.received().size(), 1U);
}

TEST(Commands, NobodyThereIsSaidInOneLine) {
    std::ostringstream out;
    std::ostringstream err;
    // Port 1 of the loopback interface is nobody's.
    EXPECT_EQ(runClient({"--host", "127.0.0.1", "--port", "1", "info"}, out, err), 1);
    EXPECT_THAT(err.str(), StartsWith("tarnly-client: no connection to the companion: connectionFailed("));
    EXPECT_EQ(err.str().find('\n'), err.str().size() - 1);
}

TEST(Commands, ASilentCompanionIsGivenUp) {
    const ScriptedCompanion companion([](const Request&) { return Answers{}; });
    const auto outcome = run(companion, {"info", "--timeout", "0.05"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err, "tarnly-client: the companion did not answer in time\n");
}

} // namespace
} // namespace tarnly::client
