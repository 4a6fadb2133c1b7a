#include <gtest/gtest.h>

#include "TarnlyXPlane/ReconnectingFixture.hpp"

namespace tarnly {
namespace {

using namespace test;
using Ids = std::vector<std::int64_t>;

const std::string subscribing = "dataref_subscribe_values";
const std::string writing = "dataref_set_values";

/// What becomes of requests while the simulator comes and goes.
class ReconnectingBackendRequestsTest : public ReconnectingFixture {
  protected:
    /// One of each that needs the simulator.
    std::vector<Pending> beginAll() {
        return {beginRead({"sim/x"}), beginWrite("sim/x"), beginCommand("sim/c"),
                beginSample(),        beginMove(),         beginTask(backend->applyAttitude(1, 2, 3, 4))};
    }
};

TEST_F(ReconnectingBackendRequestsTest, RequestFailsWithWhatItsAttemptFailsWith) {
    isAway = true;
    transport->latency = 100ms;
    start();
    const auto all = beginAll();
    advance(99ms);
    for (const auto& each : all)
        EXPECT_FALSE(each->isDone);
    advance(1ms);
    for (const auto& each : all)
        EXPECT_EQ(each->failure(), refused);
    EXPECT_EQ(attempts(), 1);
}

TEST_F(ReconnectingBackendRequestsTest, RequestInAPauseIsAnsweredByTheNextAttempt) {
    isAway = true;
    start();
    advance(40s);
    const int before = attempts();
    const auto first = beginRead({"sim/x"});
    advance(20ms);
    EXPECT_EQ(first->failure(), refused);
    EXPECT_EQ(attempts(), before + 1);
    std::vector<Pending> others;
    for (int i = 0; i < 10; ++i)
        others.push_back(beginRead({"sim/x"}));
    advance(220ms);
    EXPECT_EQ(attempts(), before + 1) << "not twice in a quarter of a second";
    advance(30ms);
    EXPECT_EQ(attempts(), before + 2);
    for (const auto& each : others)
        EXPECT_EQ(each->failure(), refused);
}

TEST_F(ReconnectingBackendRequestsTest, RequestInALongPauseTriesAtOnce) {
    isAway = true;
    start();
    advance(40s);
    isAway = false;
    const auto write = beginWrite("sim/x");
    advance(20ms);
    EXPECT_TRUE(write->hasSucceeded());
    EXPECT_EQ(sentIds(writing), (Ids{12}));
}

TEST_F(ReconnectingBackendRequestsTest, RequestsDoNotMakeAttemptsMoreFrequentThanTheShortestPause) {
    isAway = true;
    start();
    for (int i = 0; i < 1000; ++i) {
        beginRead({"sim/x"});
        advance(10ms);
    }
    EXPECT_LE(attempts(), 41);
}

TEST_F(ReconnectingBackendRequestsTest, SimulatorThatSaysNothingIsWaitedForWithinLimits) {
    transport->latency = 1h;
    start();
    const auto read = beginRead({"sim/x", "sim/a"});
    const auto write = beginWrite("sim/x");
    const auto command = beginCommand("sim/c");
    const auto sample = beginSample();
    const auto move = beginMove();
    advance(1999ms);
    EXPECT_FALSE(sample->isDone);
    advance(1ms);
    EXPECT_EQ(sample->failure(), timedOut);
    advance(2999ms);
    EXPECT_FALSE(read->isDone || write->isDone || command->isDone || move->isDone);
    advance(1ms);
    EXPECT_EQ(read->failure(), R"(timeout("sim/x"))");
    EXPECT_EQ(write->failure(), timedOut);
    EXPECT_EQ(command->failure(), timedOut);
    EXPECT_EQ(move->failure(), timedOut);
}

TEST_F(ReconnectingBackendRequestsTest, LinkThatIsSilentAnswersNothingFromBefore) {
    startAndConnect();
    deliver(12, "3");
    EXPECT_EQ(beginRead({"sim/x"})->values, (std::vector<double>{3}));
    transport->latency = 1h;
    transport->webSocket->answersPings = false;
    advance(7999ms);
    EXPECT_EQ(beginRead({"sim/x"})->values, (std::vector<double>{3}));
    advance(1ms);
    EXPECT_EQ(beginRead({"sim/x"})->failure(), R"(timeout("sim/x"))");
    EXPECT_EQ(beginWrite("sim/x")->failure(), R"(timeout("sim/x"))");
    EXPECT_EQ(beginCommand("sim/c")->failure(), R"(timeout("sim/c"))");
    EXPECT_TRUE(beginSample()->error);
    EXPECT_TRUE(sentIds(writing).empty());
}

TEST_F(ReconnectingBackendRequestsTest, CatalogueThatDoesNotComeIsWaitedForForFiveSeconds) {
    startAndConnect();
    transport->latency = 1h;
    const auto read = beginRead({"sim/none"});
    const auto write = beginWrite("sim/none");
    advance(4999ms);
    EXPECT_FALSE(read->isDone || write->isDone);
    advance(1ms);
    EXPECT_EQ(read->failure(), R"(timeout("sim/none"))");
    EXPECT_EQ(write->failure(), timedOut);
}

TEST_F(ReconnectingBackendRequestsTest, CommandMayTakeAMinute) {
    startAndConnect();
    transport->latency = 59s;
    const auto command = beginCommand("sim/c");
    advance(58999ms);
    EXPECT_FALSE(command->isDone);
    EXPECT_TRUE(isConnected());
    advance(1ms);
    EXPECT_TRUE(command->hasSucceeded());
}

TEST_F(ReconnectingBackendRequestsTest, NextLinkLooksUpNamesAnew) {
    startAndConnect();
    const auto first = transport->webSocket;
    restartSimulator();
    endLink();
    EXPECT_TRUE(beginWrite("sim/x")->hasSucceeded());
    EXPECT_TRUE(beginCommand("sim/c")->hasSucceeded());
    const auto read = beginRead({"sim/x", "sim/a"});
    EXPECT_EQ(sentIds(writing), (Ids{112}));
    EXPECT_EQ(sentIds(subscribing), (Ids{112, 113}));
    transport->webSocket->deliverValues({{112, "5"}, {113, "6"}});
    advance(20ms);
    EXPECT_EQ(read->values, (std::vector<double>{5, 6}));
    EXPECT_EQ(requests("POST /api/v2/command/918/activate"), 1);
    EXPECT_EQ(requests("POST /api/v2/command/818/activate"), 0);
    EXPECT_TRUE(first->sent.empty());
}

TEST_F(ReconnectingBackendRequestsTest, RequestThatMeetsTheEndGoesOutWithTheNextLinksIds) {
    startAndConnect();
    const auto first = transport->webSocket;
    restartSimulator();
    first->cancel(); // nobody has noticed yet
    const auto write = beginWrite("sim/x");
    const auto read = beginRead({"sim/a"});
    advance(20ms);
    EXPECT_TRUE(write->hasSucceeded());
    EXPECT_EQ(sentIds(writing), (Ids{112}));
    EXPECT_EQ(sentIds(subscribing), (Ids{113}));
    EXPECT_TRUE(first->sent.empty());
}

TEST_F(ReconnectingBackendRequestsTest, ValuesFromBeforeAreNoneOfTheNextLink) {
    startAndConnect();
    deliver(12, "3");
    endLink();
    const auto read = beginRead({"sim/x"});
    EXPECT_FALSE(read->isDone);
    advance(1s);
    EXPECT_EQ(read->failure(), R"(timeout("sim/x"))");
}

TEST_F(ReconnectingBackendRequestsTest, ReadThatWaitsAcrossTheEndGoesOnOnTheNextLink) {
    startAndConnect();
    const auto read = beginRead({"sim/x", "sim/a[1]"});
    advance(500ms);
    restartSimulator();
    endLink();
    advance(20ms);
    ASSERT_TRUE(isConnected());
    EXPECT_EQ(sentIds(subscribing), (Ids{112, 113}));
    transport->webSocket->deliverValues({{112, "5"}, {113, "[6,7]"}});
    advance(20ms);
    EXPECT_EQ(read->values, (std::vector<double>{5, 7}));
}

TEST_F(ReconnectingBackendRequestsTest, AlsoWhereTheLinkDiedYoung) {
    start();
    ASSERT_TRUE(isConnected());
    const auto read = beginRead({"sim/x"});
    advance(100ms);
    endLink();
    EXPECT_FALSE(isConnected());
    const auto write = beginWrite("sim/x");
    advance(300ms);
    ASSERT_TRUE(isConnected());
    EXPECT_TRUE(write->hasSucceeded()) << write->failure();
    deliver(12, "5");
    advance(20ms);
    EXPECT_EQ(read->values, (std::vector<double>{5})) << read->failure();
}

TEST_F(ReconnectingBackendRequestsTest, LinksThatAllDieYoungEndARequestAtItsLimit) {
    backend->setWatched(true);
    transport->onWebSocket = [](FakeWebSocket& webSocket) {
        webSocket.cancel();
        return true;
    };
    start();
    const auto read = beginRead({"sim/x"});
    const auto write = beginWrite("sim/x");
    advance(5s);
    EXPECT_TRUE(read->isDone && write->isDone);
    EXPECT_FALSE(read->failure().empty() || write->failure().empty());
    EXPECT_LE(transport->openedWebSockets.size(), 21U);
}

TEST_F(ReconnectingBackendRequestsTest, ReadAcrossTheEndFailsWithWhyThereIsNoNextLink) {
    startAndConnect();
    const auto read = beginRead({"sim/x"});
    advance(500ms);
    isAway = true;
    endLink();
    advance(300ms);
    EXPECT_EQ(read->failure(), refused);
}

TEST_F(ReconnectingBackendRequestsTest, CommandThatHasNotGoneOutRunsOnceOnTheNextLink) {
    answersPings = false;
    startAndConnect();
    const auto command = beginCommand("sim/c");
    advance(100ms);
    restartSimulator();
    endLink();
    advance(1s);
    EXPECT_TRUE(command->hasSucceeded()) << command->failure();
    EXPECT_EQ(requests("POST /api/v2/command/818/activate"), 0);
    EXPECT_EQ(requests("POST /api/v2/command/918/activate"), 1);
}

TEST_F(ReconnectingBackendRequestsTest, CommandThatHasGoneOutIsNotRunTwice) {
    startAndConnect();
    transport->latency = 500ms;
    const auto command = beginCommand("sim/c");
    EXPECT_EQ(requests("POST /api/v2/command/818/activate"), 1);
    restartSimulator();
    isAway = true;
    endLink();
    advance(500ms);
    isAway = false;
    advance(1min);
    EXPECT_EQ(command->failure(), refused.substr(0, refused.find(": the simulator")) + "\")");
    EXPECT_EQ(requests("POST /api/v2/command/918/activate"), 0);
}

TEST_F(ReconnectingBackendRequestsTest, MoveThatIsHalfDoneFails) {
    startAndConnect();
    deliver(23, "1000");
    deliver(24, "300");
    const auto move = beginMove();
    EXPECT_EQ(sentIds(writing), (Ids{21, 22, 23}));
    advance(1s);
    endLink();
    ASSERT_TRUE(isConnected());
    advance(10s);
    EXPECT_TRUE(move->failure().starts_with("connectionClosed(")) << move->failure();
    EXPECT_TRUE(sentIds(writing).empty());
}

TEST_F(ReconnectingBackendRequestsTest, MoveThatHasNotBegunGoesOnOnTheNextLink) {
    startAndConnect();
    const auto move = beginMove();
    advance(500ms);
    restartSimulator();
    endLink();
    ASSERT_TRUE(isConnected());
    advance(20ms);
    transport->webSocket->deliverValues({{123, "1000"}, {124, "300"}});
    advance(100ms);
    EXPECT_EQ(sentIds(writing), (Ids{121, 122, 123}));
    advance(2s);
    EXPECT_TRUE(move->hasSucceeded()) << move->failure();
    EXPECT_EQ(sentIds(writing).size(), 6U);
}

TEST_F(ReconnectingBackendRequestsTest, MovesOwnPauseIsNotCounted) {
    startAndConnect();
    const auto move = beginMove();
    advance(900ms);
    deliver(24, "300");
    advance(900ms);
    deliver(23, "1000");
    advance(2100ms);
    EXPECT_TRUE(move->hasSucceeded()) << move->failure();
}

TEST_F(ReconnectingBackendRequestsTest, SampleWaitsASecondForItsAltitudeOnEachLinkAndTwoInAll) {
    startAndConnect();
    const auto sample = beginSample();
    advance(900ms);
    endLink();
    const auto next = beginSample();
    advance(979ms);
    EXPECT_FALSE(next->isDone);
    advance(1ms);
    EXPECT_TRUE(next->hasSucceeded());
    EXPECT_TRUE(sample->isDone);
}

TEST_F(ReconnectingBackendRequestsTest, SampleThatWasCutShortLeavesTheRestOfTheSecondToTheNext) {
    transport->latency = 900ms;
    start();
    const auto first = beginSample();
    advance(2s);
    EXPECT_EQ(first->failure(), timedOut);
    transport->latency = 0ms;
    const auto next = beginSample();
    advance(500ms);
    EXPECT_FALSE(next->isDone) << "nobody knows the altitude yet";
    deliver(25, "3500");
    advance(20ms);
    EXPECT_TRUE(next->hasSucceeded());
}

TEST_F(ReconnectingBackendRequestsTest, NoNamesNeedNoSimulator) {
    isAway = true;
    start();
    EXPECT_TRUE(beginRead({})->hasSucceeded());
}

TEST_F(ReconnectingBackendRequestsTest, NameOfACommandIsLookedForForFiveSecondsOnly) {
    startAndConnect();
    transport->latency = 1h;
    const auto command = beginCommand("sim/new");
    advance(4999ms);
    EXPECT_FALSE(command->isDone);
    advance(1ms);
    EXPECT_EQ(command->failure(), R"(timeout("sim/new"))");
}

TEST_F(ReconnectingBackendRequestsTest, AtTheMainMenuNamesCannotBeKnown) {
    transport->datarefs.clear();
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":0})");
    startAndConnect();
    const std::string expected = R"(timeout("sim/x: the simulator is at its main menu: load a flight"))";
    const auto read = beginRead({"sim/x"});
    const auto write = beginWrite("sim/x");
    const auto sample = beginSample();
    advance(250ms);
    EXPECT_EQ(read->failure(), expected);
    EXPECT_EQ(write->failure(), expected);
    EXPECT_TRUE(sample->error);
}

TEST_F(ReconnectingBackendRequestsTest, ReadAtTheMainMenuIsAnsweredWhenTheFlightIsThere) {
    const auto datarefs = std::exchange(transport->datarefs, {});
    start();
    const auto write = beginWrite("sim/x");
    transport->datarefs = datarefs;
    advance(250ms);
    EXPECT_TRUE(write->hasSucceeded()) << write->failure();
}

TEST_F(ReconnectingBackendRequestsTest, ClosingEndsWhateverWaits) {
    startAndConnect();
    const auto all = beginAll();
    advance(100ms);
    backend->close();
    advance(100ms);
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_TRUE(all[i]->isDone) << i;
    EXPECT_EQ(all[0]->failure(), closed);
    EXPECT_TRUE(clock.run(io, backend->join(1s)));
    EXPECT_EQ(clock.sleeping(), 0U);
}

TEST_F(ReconnectingBackendRequestsTest, ClosingDuringAnAttemptEndsWhoWaitsForIt) {
    transport->latency = 1h;
    start();
    const auto all = beginAll();
    advance(100ms);
    backend->close();
    advance(0ms);
    for (const auto& each : all)
        EXPECT_EQ(each->failure(), closed);
    EXPECT_EQ(clock.sleeping(), 0U);
}

TEST_F(ReconnectingBackendRequestsTest, ClosingInAPauseEndsWhoWaitsForTheNextAttempt) {
    isAway = true;
    start();
    advance(40s);
    const auto read = beginRead({"sim/x"});
    backend->close();
    advance(20ms);
    EXPECT_EQ(read->failure(), closed);
}

TEST_F(ReconnectingBackendRequestsTest, WhoIsToldOfAFailureMayEndTheBackend) {
    transport->latency = 1h;
    start();
    auto names = std::make_shared<const std::vector<std::string>>(1, "sim/x");
    bool isDone = false;
    boost::asio::co_spawn(io, backend->getDatarefs(names),
                          [&](const std::exception_ptr& error, const std::vector<double>&) {
                              isDone = error != nullptr;
                              backend->close();
                          });
    advance(6s);
    EXPECT_TRUE(isDone);
    EXPECT_TRUE(clock.run(io, backend->join(1s)));
}

} // namespace
} // namespace tarnly
