#include <gtest/gtest.h>

#include "TarnlyXPlane/ReconnectingFixture.hpp"

namespace tarnly {
namespace {

using namespace test;
using Kind = SimulatorStage::Kind;
using Strings = std::vector<std::string>;
using Times = std::vector<std::int64_t>;

/// How the simulator is looked for, and what is told of it.
class ReconnectingBackendTest : public ReconnectingFixture {
  protected:
    /// Until `end` after the start: the moments of the attempts, in milliseconds.
    Times attemptsUntil(Clock::Duration end) {
        Times times;
        while (clock.now() - begin < end) {
            while (static_cast<int>(times.size()) < attempts()) {
                const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(clock.now() - begin);
                times.push_back(now.count());
            }
            advance(50ms);
        }
        return times;
    }

    std::string version() { return backend->simInfo().version; }

    void tellVersion(const std::string& version) {
        answers["/api/capabilities"] = httpResponse(200, R"({"x-plane":{"version":")" + version + "\"}}");
    }
};

TEST_F(ReconnectingBackendTest, ConnectsByItself) {
    EXPECT_EQ(backend->stage().kind, Kind::notRunning);
    start();
    EXPECT_TRUE(isConnected());
    EXPECT_EQ(backend->stage().kind, Kind::flightLoaded);
    EXPECT_EQ(stages, (Strings{"flight_loaded"}));
}

TEST_F(ReconnectingBackendTest, PausesGrowToTwoSecondsWhileSomebodyCares) {
    isAway = true;
    backend->setWatched(true);
    start();
    EXPECT_EQ(attemptsUntil(10s), (Times{0, 250, 750, 1750, 3750, 5750, 7750, 9750}));
}

TEST_F(ReconnectingBackendTest, PausesGrowToThirtySecondsWhileNobodyCares) {
    isAway = true;
    start();
    EXPECT_EQ(attemptsUntil(130s),
              (Times{0, 250, 750, 1750, 3750, 7750, 15750, 31750, 61750, 91750, 121750}));
    EXPECT_TRUE(stages.empty()) << "it was known to be away";
}

TEST_F(ReconnectingBackendTest, WhoBeginsToCareEndsALongPause) {
    isAway = true;
    start();
    advance(40s);
    EXPECT_EQ(attempts(), 8);
    isAway = false;
    backend->setWatched(true);
    VirtualClock::settle(io);
    EXPECT_TRUE(isConnected());
}

TEST_F(ReconnectingBackendTest, WhoBeginsToCareFindsQuickAttemptsAgain) {
    isAway = true;
    start();
    advance(40s);
    backend->setWatched(true);
    VirtualClock::settle(io);
    EXPECT_EQ(attempts(), 9);
    advance(500ms);
    EXPECT_EQ(attempts(), 10);
    backend->setWatched(true); // nothing new
    advance(20s);
    EXPECT_LE(attempts(), 22);
    EXPECT_GE(attempts(), 18);
}

TEST_F(ReconnectingBackendTest, WhoAsksWhetherItIsThereHasItLookedForAtOnce) {
    isAway = true;
    start();
    advance(40s);
    isAway = false;
    EXPECT_EQ(backend->stage().kind, Kind::notRunning) << "nobody has asked";
    auto looking = backend->lookAnew(1s);
    const auto asked = beginTask(std::move(looking));
    advance(20ms);
    EXPECT_TRUE(asked->isDone);
    EXPECT_EQ(backend->stage().kind, Kind::flightLoaded);
}

TEST_F(ReconnectingBackendTest, WhoAsksInVainIsToldByTheStageAndByNoFailure) {
    isAway = true;
    start();
    advance(40s);
    const int before = attempts();
    auto looking = backend->lookAnew(1s);
    const auto asked = beginTask(std::move(looking));
    advance(20ms);
    EXPECT_TRUE(asked->hasSucceeded());
    EXPECT_EQ(attempts(), before + 1);
    EXPECT_EQ(backend->stage().kind, Kind::notRunning);
}

TEST_F(ReconnectingBackendTest, WhoAsksOfASilentSimulatorWaitsForTheLimitAtMost) {
    holdsHandshakes = true;
    start();
    auto looking = backend->lookAnew(1s);
    const auto asked = beginTask(std::move(looking));
    EXPECT_FALSE(asked->isDone);
    advance(1s);
    EXPECT_TRUE(asked->hasSucceeded());
}

TEST_F(ReconnectingBackendTest, WatchedItIsFoundWithinTwoSecondsOfAnswering) {
    isAway = true;
    backend->setWatched(true);
    start();
    advance(61234ms);
    isAway = false;
    advance(2s);
    EXPECT_TRUE(isConnected());
}

TEST_F(ReconnectingBackendTest, LinkThatEndsIsReplacedAtOnce) {
    startAndConnect();
    const auto first = transport->webSocket;
    endLink();
    EXPECT_NE(transport->webSocket, first);
    EXPECT_TRUE(isConnected());
    EXPECT_EQ(stages, (Strings{"flight_loaded"})) << "nothing has changed for anybody";
}

TEST_F(ReconnectingBackendTest, AfterALongLifePausesBeginSmallAgain) {
    backend->setWatched(true);
    isAway = true;
    start();
    advance(10s);
    isAway = false;
    advance(20s);
    isAway = true;
    const int before = attempts();
    endLink();
    EXPECT_EQ(attempts(), before + 1);
    advance(250ms);
    EXPECT_EQ(attempts(), before + 2);
    advance(500ms);
    EXPECT_EQ(attempts(), before + 3);
}

TEST_F(ReconnectingBackendTest, LinksThatDieYoungAreReplacedWithGrowingPauses) {
    backend->setWatched(true);
    transport->onWebSocket = [](FakeWebSocket& webSocket) {
        webSocket.cancel();
        return true;
    };
    start();
    advance(60s);
    EXPECT_LE(transport->openedWebSockets.size(), 33U);
    EXPECT_GE(transport->openedWebSockets.size(), 25U);
}

TEST_F(ReconnectingBackendTest, LinksThatEndRightAfterOpeningDoNotSpin) {
    start();
    for (int i = 0; i < 200; ++i) {
        if (isConnected()) endLink();
        advance(10ms);
    }
    EXPECT_LE(transport->openedWebSockets.size(), 6U);
}

TEST_F(ReconnectingBackendTest, RefusedHandshakeFailsThatAttemptOnly) {
    holdsHandshakes = true;
    backend->setWatched(true);
    start();
    const auto read = beginRead({"sim/x"});
    holdsHandshakes = false;
    transport->webSocket->refuse("127.0.0.1:8086: The WebSocket handshake was declined by the remote peer");
    VirtualClock::settle(io);
    EXPECT_EQ(read->failure(),
              R"(connectionFailed("127.0.0.1:8086: The WebSocket handshake was declined by the remote peer: )"
              R"(the simulator refuses connections: )"
              R"(allow incoming traffic in the simulator's network settings"))");
    EXPECT_EQ(backend->stage().kind, Kind::refusing);
    advance(250ms);
    EXPECT_TRUE(isConnected());
    EXPECT_EQ(stages, (Strings{"refusing", "flight_loaded"}));
}

TEST_F(ReconnectingBackendTest, LateHandshakeFailsThatAttemptOnly) {
    holdsHandshakes = true;
    backend->setWatched(true);
    start();
    advance(10s);
    holdsHandshakes = false;
    transport->webSocket->refuse("127.0.0.1:8086", NetworkError::Case::timedOut);
    VirtualClock::settle(io);
    EXPECT_EQ(stages, (Strings{"silent"}));
    advance(250ms);
    EXPECT_TRUE(isConnected());
    EXPECT_EQ(stages, (Strings{"silent", "flight_loaded"}));
}

TEST_F(ReconnectingBackendTest, LateHandshakeThatSucceedsIsALink) {
    holdsHandshakes = true;
    start();
    const auto write = beginWrite("sim/x");
    advance(4s);
    EXPECT_FALSE(write->isDone);
    transport->webSocket->open();
    VirtualClock::settle(io);
    EXPECT_TRUE(write->hasSucceeded());
    EXPECT_EQ(backend->stage().kind, Kind::flightLoaded);
}

TEST_F(ReconnectingBackendTest, RefusalAndItsEndAreTold) {
    backend->setWatched(true);
    answers["/api/v2/datarefs"] = httpResponse(403, R"({"error_message":"Incoming traffic is off"})");
    start();
    EXPECT_EQ(backend->stage().kind, Kind::refusing);
    EXPECT_EQ(backend->stage().detail, "Incoming traffic is off");
    advance(10s);
    EXPECT_EQ(stages, (Strings{"refusing"}));
    answers.erase("/api/v2/datarefs");
    advance(2s);
    EXPECT_EQ(stages, (Strings{"refusing", "flight_loaded"}));
    EXPECT_EQ(backend->stage().detail, "");
}

TEST_F(ReconnectingBackendTest, TooOldIsToldWithTheVersion) {
    answers["/api/v2/datarefs"] = httpResponse(404, "<html></html>");
    tellVersion("12.1.2");
    start();
    EXPECT_EQ(backend->stage().kind, Kind::tooOld);
    EXPECT_EQ(backend->stage().detail, "12.1.2");
}

TEST_F(ReconnectingBackendTest, LifeOfASimulatorIsToldInOrder) {
    isAway = true;
    backend->setWatched(true);
    start();
    advance(10s);
    EXPECT_TRUE(stages.empty());

    isAway = false;
    const auto datarefs = std::exchange(transport->datarefs, {});
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":0})");
    advance(10s);
    EXPECT_EQ(stages, (Strings{"main_menu"}));

    transport->datarefs = datarefs;
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":7})");
    advance(2s);
    EXPECT_EQ(stages, (Strings{"main_menu", "flight_loaded"}));

    transport->datarefs.clear();
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":0})");
    advance(5s);
    EXPECT_EQ(stages, (Strings{"main_menu", "flight_loaded", "main_menu"}));

    isAway = true;
    endLink();
    EXPECT_EQ(stages, (Strings{"main_menu", "flight_loaded", "main_menu", "not_running"}));
}

TEST_F(ReconnectingBackendTest, SimulatorThatFreezesIsSilentSinceItsLastSignUntilItAnswers) {
    backend->setWatched(true);
    startAndConnect();
    const auto lastSign = clock.now();
    deliver(12, "1");
    transport->latency = 1h;
    transport->webSocket->answersPings = false;
    answersPings = false;
    holdsHandshakes = true;
    for (int i = 0; i < 60; ++i) {
        advance(1s);
        const auto stage = backend->stage();
        if (i < 7) continue;
        ASSERT_EQ(stage.kind, Kind::silent) << i;
        ASSERT_EQ(stage.silentSince, lastSign) << i;
    }
    EXPECT_GT(transport->exchanges.size(), 8U) << "another link has been tried";
    EXPECT_EQ(stages, (Strings{"flight_loaded", "silent"}));

    transport->latency = 0ms;
    holdsHandshakes = false;
    advance(13s);
    EXPECT_EQ(stages, (Strings{"flight_loaded", "silent", "flight_loaded"}));
}

TEST_F(ReconnectingBackendTest, SimulatorThatNeverAnswersIsSilentSinceTheFirstAttempt) {
    transport->latency = 1h;
    start();
    advance(1999ms);
    EXPECT_TRUE(stages.empty());
    advance(1ms);
    EXPECT_EQ(stages, (Strings{"silent"}));
    advance(1min);
    EXPECT_EQ(stages, (Strings{"silent"}));
    EXPECT_EQ(backend->stage().silentSince, begin);
}

TEST_F(ReconnectingBackendTest, SilenceThatEndsWithTheSimulatorIsNoSilenceAnyMore) {
    backend->setWatched(true);
    transport->latency = 1h;
    start();
    advance(5s);
    isAway = true;
    transport->latency = 0ms;
    advance(10s);
    EXPECT_EQ(stages, (Strings{"silent", "not_running"}));
    EXPECT_EQ(backend->stage().silentSince, std::nullopt);
}

TEST_F(ReconnectingBackendTest, VersionIsThatOfTheSimulatorThatWasLastThere) {
    EXPECT_EQ(version(), "unknown");
    tellVersion("12.4.0");
    startAndConnect();
    EXPECT_EQ(version(), "12.4.0");

    isAway = true;
    endLink();
    EXPECT_EQ(version(), "12.4.0");

    isAway = false;
    tellVersion("12.4.1");
    advance(30s);
    ASSERT_TRUE(isConnected());
    EXPECT_EQ(version(), "12.4.1");
    answers.erase("/api/capabilities");
    endLink();
    EXPECT_EQ(version(), "12.4.1");
    EXPECT_EQ(backend->simInfo().sim, "xplane");
}

TEST_F(ReconnectingBackendTest, ProofsAreOfThePresentLinkAlone) {
    startAndConnect();
    const auto sample = beginSample();
    deliver(25, "3500");
    advance(20ms);
    ASSERT_TRUE(sample->hasSucceeded());
    const auto seen = clock.run(io, backend->getTrackSample());
    EXPECT_TRUE(backend->isProven(seen.link, seen.takenAt));
    EXPECT_FALSE(backend->isProven(seen.link + 1, seen.takenAt));

    endLink();
    ASSERT_TRUE(isConnected());
    EXPECT_FALSE(backend->isProven(seen.link, seen.takenAt));
    deliver(25, "3500");
    const auto next = clock.run(io, backend->getTrackSample());
    EXPECT_NE(next.link, seen.link);
    EXPECT_FALSE(backend->isProven(seen.link, seen.takenAt));
}

TEST_F(ReconnectingBackendTest, NobodyNeedsToListen) {
    backend->onStageChange(nullptr);
    start();
    EXPECT_EQ(backend->stage().kind, Kind::flightLoaded);
}

TEST_F(ReconnectingBackendTest, ClosedItLooksForNothing) {
    startAndConnect();
    const auto before = transport->exchanges.size();
    backend->close();
    backend->close();
    advance(5min);
    EXPECT_EQ(transport->exchanges.size(), before);
    EXPECT_FALSE(isConnected());
    EXPECT_TRUE(clock.run(io, backend->join(1s)));
}

TEST_F(ReconnectingBackendTest, ClosingInAPauseOrAnAttemptEndsEverything) {
    isAway = true;
    start();
    advance(100ms);
    backend->close();
    EXPECT_TRUE(clock.run(io, backend->join(1s)));
    EXPECT_EQ(clock.sleeping(), 0U);
}

TEST_F(ReconnectingBackendTest, ClosingDuringAnAttemptEndsEverything) {
    transport->latency = 5s;
    start();
    advance(3s);
    backend->close();
    EXPECT_TRUE(clock.run(io, backend->join(1s)));
    EXPECT_EQ(clock.sleeping(), 0U);
    EXPECT_TRUE(transport->openedWebSockets.empty());
}

TEST_F(ReconnectingBackendTest, ClosingDuringAHandshakeEndsEverything) {
    holdsHandshakes = true;
    start();
    advance(3s);
    backend->close();
    EXPECT_TRUE(clock.run(io, backend->join(1s)));
    EXPECT_EQ(clock.sleeping(), 0U);
    EXPECT_FALSE(isConnected());
}

TEST_F(ReconnectingBackendTest, BackendThatWasNeverStartedCanBeClosed) {
    backend->close();
    EXPECT_TRUE(clock.run(io, backend->join(1s)));
    EXPECT_EQ(beginRead({"sim/x"})->failure(), closed);
}

} // namespace
} // namespace tarnly
