#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/ClientRun.hpp"
#include "TarnlyClient/Companion/RecordingCompanion.hpp"

namespace tarnly::client {
namespace {

using testing::StartsWith;

using test::answering;
using test::paired;
using test::run;
using test::ScriptedCompanion;
using Request = boost::json::object;
using Answers = std::vector<std::string>;

TEST(WatchCommand, WatchPrintsPushesUpToTheCount) {
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

TEST(WatchCommand, WatchEndsWhenItsTimeIsOver) {
    const ScriptedCompanion companion(answering(R"({"a":1})"));
    const auto outcome = run(companion, {"watch", "a", "--seconds", "0.05"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
}

TEST(WatchCommand, AnInterruptEndsAWatchInOrder) {
    const ScriptedCompanion companion(paired([](const Request& request) {
        ::kill(::getpid(), SIGINT);
        return Answers{ScriptedCompanion::reply(request, R"({"a":1})")};
    }));
    const auto outcome = run(companion, {"watch", "a"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
}

TEST(WatchCommand, AnInterruptWhileTheCompanionIsSilentEndsAWatchInOrder) {
    const ScriptedCompanion companion([](const Request&) {
        ::kill(::getpid(), SIGINT);
        return Answers{};
    });
    const auto outcome = run(companion, {"watch", "a"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
}

/// The tool, pointed at `companion`.
std::string watchByCommand(const test::RecordingCompanion& companion, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--host", "127.0.0.1", "--port", std::to_string(companion.port()),
                                         "watch", "--recording"});
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(runClient(arguments, out, err), 0) << err.str();
    EXPECT_EQ(err.str(), "");
    return out.str();
}

TEST(WatchRecordingCommand, PeopleSeeTriggersProgramsTheSamplesToo) {
    test::RecordingCompanion companion;
    companion.record(1, {"a"});
    companion.record(2, {"b"});
    EXPECT_EQ(watchByCommand(companion, {"--count", "2"}),
              "     1.00 s  fired a  (speak)\n     2.00 s  fired b  (speak)\n");
    EXPECT_EQ(watchByCommand(companion, {"--count", "1", "--json"}),
              R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":0}})"
              "\n"
              R"({"kind":"fired","fired":{"trigger_id":"a","elapsed_s":1,"action_kind":"speak"}})"
              "\n");
}

TEST(WatchRecordingCommand, EndsInOrderWhenInterrupted) {
    // Hangs up for good after its first answers, so that the signal meets a watch that waits or connects.
    std::atomic<int> answers = 0;
    const test::ScriptedCompanion companion(
        [&](const boost::json::object& request) -> std::optional<std::vector<std::string>> {
            if (++answers == 4) ::kill(::getpid(), SIGINT);
            if (answers > 2) return std::nullopt;
            const bool isPair = request.at("type") == "pair";
            return std::vector{test::ScriptedCompanion::reply(
                request, isPair ? R"({"accepted":true})" : R"({"samples":[],"fired":[]})")};
        });
    std::ostringstream out;
    std::ostringstream err;
    const auto port = std::to_string(companion.port());
    EXPECT_EQ(runClient({"--host", "127.0.0.1", "--port", port, "watch", "--recording"}, out, err), 0);
    EXPECT_EQ(err.str(), "tarnly-client: the companion has ended the connection; trying again\n");
}

TEST(WatchRecordingCommand, ACompanionThatIsNotThereIsAnError) {
    std::ostringstream out;
    std::ostringstream err;
    // Port 1 of the loopback interface is nobody's.
    EXPECT_EQ(runClient({"--host", "127.0.0.1", "--port", "1", "watch", "--recording"}, out, err), 1);
    EXPECT_THAT(err.str(), StartsWith("tarnly-client: no connection to the companion: "));
}

} // namespace
} // namespace tarnly::client
