#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Support/LoopbackHttpServer.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyClient/Commands/ClientRun.hpp"

namespace tarnly::client {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using test::answering;
using test::paired;
using test::run;
using test::ScriptedCompanion;
using Request = boost::json::object;
using Answers = std::vector<std::string>;

Task<std::optional<HttpResponse>> pageMissing() { co_return HttpResponse{404, "text/plain", "no"}; }

TEST(CompanionCommands, InfoShowsTheSimulator) {
    const ScriptedCompanion companion(answering(R"({"sim":"xplane","version":"12.1"})"));
    EXPECT_EQ(run(companion, {"info"}).out, "xplane 12.1\n");
    EXPECT_EQ(run(companion, {"info", "--json"}).out, "{\"sim\":\"xplane\",\"version\":\"12.1\"}\n");
    EXPECT_THAT(
        companion.received(),
        ElementsAre(R"({"type":"pair","req_id":1,"params":{}})", R"({"type":"sim_info","req_id":2})",
                    R"({"type":"pair","req_id":1,"params":{}})", R"({"type":"sim_info","req_id":2})"));
}

TEST(CompanionCommands, SendPrintsTheAnswerAsItIs) {
    const ScriptedCompanion companion(paired([](const Request&) {
        return Answers{ScriptedCompanion::push("{}"), R"({"type":"other","req_id":1})",
                       R"( {"req_id":7, "type":"x"})"};
    }));
    EXPECT_EQ(run(companion, {"send", R"({"type":"x","req_id":7})"}).out,
              " {\"req_id\":7, \"type\":\"x\"}\n");
    EXPECT_EQ(companion.received().back(), R"({"type":"x","req_id":7})");
}

TEST(CompanionCommands, ARefusalIsToldInTheCompanionsWords) {
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

TEST(CompanionCommands, ThePasswordIsThatOfTheFile) {
    const ScriptedCompanion companion(answering(R"({"sim":"xplane","version":"1"})"));
    const test::TemporaryFolder folder;
    const auto file = folder.write("password", "secret\n");
    EXPECT_EQ(run(companion, {"--password-file", file.string(), "info"}).exitCode, 0);
    EXPECT_EQ(companion.received().front(), R"({"type":"pair","req_id":1,"params":{"password":"secret"}})");
}

TEST(CompanionCommands, ARefusedPairingEndsAll) {
    const ScriptedCompanion companion([](const Request& request) {
        return Answers{
            ScriptedCompanion::reply(request, R"({"accepted":false,"reason":"incorrect password"})")};
    });
    const auto outcome = run(companion, {"info"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err,
              "tarnly-client: the companion wants a password; give it by --password-file FILE\n");
    EXPECT_EQ(companion.received().size(), 1U);
}

TEST(CompanionCommands, ARefusalThatNobodyExplainsMayBeAboutAPassword) {
    const ScriptedCompanion companion([](const Request& request) {
        return Answers{ScriptedCompanion::reply(request, R"({"accepted":false})")};
    });
    EXPECT_EQ(run(companion, {"info"}).err,
              "tarnly-client: the companion refuses to pair: no reason given; "
              "it may want a password: --password-file FILE\n");
}

TEST(CompanionCommands, NobodyThereIsSaidInOneLine) {
    std::ostringstream out;
    std::ostringstream err;
    // Port 1 of the loopback interface is nobody's.
    EXPECT_EQ(runClient({"--host", "127.0.0.1", "--port", "1", "info"}, out, err), 1);
    EXPECT_THAT(err.str(), StartsWith("tarnly-client: no connection to the companion: connectionFailed("));
    EXPECT_THAT(err.str(), HasSubstr("; look whether it is running, and which port it shows"));
    EXPECT_EQ(err.str().find('\n'), err.str().size() - 1);
}

TEST(CompanionCommands, SomebodyElseThereIsSaidToBeOne) {
    boost::asio::io_context io(1);
    const test::LoopbackHttpServer other(io, [](const HttpRequest&, bool) { return pageMissing(); });
    std::thread serving([&io] { io.run(); });
    std::ostringstream out;
    std::ostringstream err;
    const auto port = std::to_string(other.endpoint().port);
    EXPECT_EQ(runClient({"--host", "127.0.0.1", "--port", port, "info"}, out, err), 1);
    io.stop();
    serving.join();
    EXPECT_THAT(err.str(),
                HasSubstr("; another program may have that port: use the one that the companion shows"));
}

TEST(CompanionCommands, ASilentCompanionIsGivenUp) {
    const ScriptedCompanion companion([](const Request&) { return Answers{}; });
    const auto outcome = run(companion, {"info", "--timeout", "0.05"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err,
              "tarnly-client: the companion did not answer in time; tarnly-client doctor tells what is in "
              "the way\n");
}

} // namespace
} // namespace tarnly::client
