#include <gtest/gtest.h>

#include "TarnlyXPlane/Link/LinkFixture.hpp"

namespace tarnly {
namespace {

using namespace test;

/// How a link finds out that the other end lives no more.
class LinkWatchTest : public LinkFixture {
  protected:
    /// Connected and watched; the times in the tests are from here.
    void connectAndWatch() {
        connect();
        watch();
    }

    /// Nobody answers over HTTP any more.
    void fallSilent() { transport->latency = 1h; }
};

TEST_F(LinkWatchTest, PingsAtOnceToLearnWhetherPingsAreAnswered) {
    connectAndWatch();
    EXPECT_EQ(webSocket().pings, 1);
    EXPECT_EQ(questions(), 0);
}

TEST_F(LinkWatchTest, QuietLinkIsAskedAfterFiveSecondsByAPingAndARead) {
    connectAndWatch();
    advance(4999ms);
    EXPECT_EQ(webSocket().pings, 1);
    EXPECT_EQ(questions(), 0);
    advance(1ms);
    EXPECT_EQ(webSocket().pings, 2);
    EXPECT_EQ(questions(), 1);
}

TEST_F(LinkWatchTest, LinkThatBringsValuesIsNotAsked) {
    connectAndWatch();
    for (int i = 0; i < 20; ++i) {
        advance(1s);
        deliverValues({{12, "1"}});
    }
    EXPECT_EQ(webSocket().pings, 1);
    EXPECT_EQ(questions(), 0);
}

TEST_F(LinkWatchTest, SilenceIsToldAfterEightSecondsAndEndsTheLinkAfterFifteen) {
    connectAndWatch();
    fallSilent();
    advance(7999ms);
    EXPECT_FALSE(link->isSilent());
    EXPECT_EQ(changes, 0);
    advance(1ms);
    EXPECT_TRUE(link->isSilent());
    EXPECT_EQ(changes, 1);
    advance(6999ms);
    EXPECT_FALSE(link->hasEnded());
    EXPECT_EQ(changes, 1);
    advance(1ms);
    EXPECT_TRUE(link->hasEnded());
    EXPECT_FALSE(webSocket().isOpen());
}

TEST_F(LinkWatchTest, AMessageEndsTheSilence) {
    connectAndWatch();
    fallSilent();
    advance(10s);
    const auto silentSince = link->lastSign();
    EXPECT_EQ(silentSince, clock.now() - 10s);
    deliverValues({{12, "1"}});
    EXPECT_FALSE(link->isSilent());
    EXPECT_EQ(changes, 2);
    advance(7999ms);
    EXPECT_FALSE(link->isSilent());
    advance(1ms);
    EXPECT_TRUE(link->isSilent());
    EXPECT_EQ(changes, 3);
    advance(7s);
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(LinkWatchTest, AnAnswerOverHttpEndsTheSilenceWherePingsAreNeverAnswered) {
    connectAndWatch();
    fallSilent();
    advance(10s);
    EXPECT_TRUE(link->isSilent());
    transport->latency = 0ms;
    advance(1s); // asked again after three seconds each
    EXPECT_FALSE(link->isSilent());
    EXPECT_EQ(changes, 2);
}

TEST_F(LinkWatchTest, APongEndsTheSilence) {
    connectAndWatch();
    fallSilent();
    advance(10s);
    EXPECT_TRUE(link->isSilent());
    webSocket().deliverPong();
    EXPECT_FALSE(link->isSilent());
    advance(3s);
    EXPECT_EQ(changes, 2);
    EXPECT_FALSE(link->hasEnded());
}

TEST_F(LinkWatchTest, HealthySimulatorThatStandsStillIsNeverCutOff) {
    connectAndWatch();
    webSocket().answersPings = true;
    advance(1h);
    EXPECT_FALSE(link->hasEnded());
    EXPECT_EQ(changes, 0);
    EXPECT_GE(questions(), 3600 / 8);
    EXPECT_LE(questions(), 3600 / 5) << "it is not pestered";
}

TEST_F(LinkWatchTest, WherePingsAreNeverAnsweredHttpAloneDecides) {
    connectAndWatch();
    advance(1h);
    EXPECT_FALSE(link->hasEnded());
    EXPECT_EQ(changes, 0);
    fallSilent();
    advance(20s);
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(LinkWatchTest, WherePingsUsedToBeAnsweredHttpDoesNotSaveTheLink) {
    connectAndWatch();
    webSocket().deliverPong();
    advance(7999ms);
    EXPECT_GE(questions(), 1);
    EXPECT_EQ(changes, 0);
    advance(1ms);
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(link->isSilent());
    advance(6999ms);
    EXPECT_FALSE(link->hasEnded());
    advance(1ms);
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(LinkWatchTest, AnswerThatComesLateInTheThreeSecondsIsInTime) {
    connectAndWatch();
    transport->latency = 2900ms;
    advance(1min);
    EXPECT_FALSE(link->hasEnded());
    EXPECT_EQ(changes, 0);
}

TEST_F(LinkWatchTest, RefusalEndsTheLink) {
    connectAndWatch();
    answers["/api/v2/datarefs/count"] = httpResponse(403, "");
    advance(4999ms);
    EXPECT_FALSE(link->hasEnded());
    advance(1ms);
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(LinkWatchTest, OtherStatusesAreSignsOfLife) {
    connectAndWatch();
    answers["/api/v2/datarefs/count"] = httpResponse(404, "<html></html>");
    advance(1min);
    EXPECT_FALSE(link->hasEnded());
    answers["/api/v2/datarefs/count"] = httpResponse(200, "what?");
    advance(1min);
    EXPECT_FALSE(link->hasEnded());
    EXPECT_EQ(changes, 0);
}

TEST_F(LinkWatchTest, FlightThatHasGoneEndsTheLink) {
    connectAndWatch();
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":0})");
    advance(5s);
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(LinkWatchTest, WebSocketThatEndsEndsTheLink) {
    connectAndWatch();
    const auto waiting = begin(link->ended());
    EXPECT_FALSE(waiting->isDone);
    webSocket().cancel();
    VirtualClock::settle(io);
    EXPECT_TRUE(waiting->hasSucceeded());
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(LinkWatchTest, ClosedLinkTellsAndAsksNothing) {
    connectAndWatch();
    link->close();
    advance(1min);
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(questions(), 0);
    EXPECT_FALSE(link->isSilent());
}

TEST_F(LinkWatchTest, LinkThatIsNotWatchedAsksNothing) {
    connect();
    advance(1min);
    EXPECT_EQ(webSocket().pings, 0);
    EXPECT_EQ(questions(), 0);
    EXPECT_FALSE(link->isSilent());
}

/// A simulator at its main menu has no datarefs.
class MainMenuTest : public LinkFixture {
  protected:
    MainMenuTest() {
        transport->datarefs.clear();
        answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":0})");
        connect();
        watch();
    }
};

TEST_F(MainMenuTest, CatalogueIsAskedEveryTwoSeconds) {
    EXPECT_TRUE(link->isAtMainMenu());
    EXPECT_EQ(datarefCatalogues(), 1);
    advance(1999ms);
    EXPECT_EQ(datarefCatalogues(), 1);
    advance(1ms);
    EXPECT_EQ(datarefCatalogues(), 2);
    advance(1999ms);
    EXPECT_EQ(datarefCatalogues(), 2);
    advance(1ms);
    EXPECT_EQ(datarefCatalogues(), 3);
    advance(56s);
    EXPECT_EQ(datarefCatalogues(), 31);
    EXPECT_FALSE(link->hasEnded());
    EXPECT_EQ(changes, 0);
}

TEST_F(MainMenuTest, FlightThatIsFoundIsTold) {
    advance(3s);
    transport->datarefs = {{"sim/x", 12}};
    advance(999ms);
    EXPECT_TRUE(link->isAtMainMenu());
    advance(1ms);
    EXPECT_FALSE(link->isAtMainMenu());
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(link->datarefIds().at("sim/x"), 12);
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":1})");
    advance(1min);
    EXPECT_EQ(datarefCatalogues(), 3) << "there is nothing to wait for any more";
    EXPECT_EQ(changes, 1);
}

TEST_F(MainMenuTest, FlightBringsItsCommands) {
    advance(5s);
    transport->datarefs = {{"sim/x", 12}};
    transport->commands = {{"sim/c", 818}, {"sim/new", 819}};
    EXPECT_EQ(commandCatalogues(), 1);
    advance(1s);
    EXPECT_EQ(commandCatalogues(), 2);
    EXPECT_EQ(link->commandIds().at("sim/new"), 819);
}

TEST_F(MainMenuTest, SlowCatalogueIsNotAskedForTwiceAtOnce) {
    transport->latency = 9s;
    advance(10s);
    EXPECT_EQ(datarefCatalogues(), 2);
    EXPECT_FALSE(link->hasEnded());
}

TEST_F(MainMenuTest, CatalogueThatFailsIsAskedForEveryTwoSecondsToo) {
    answers["/api/v2/datarefs"] = httpResponse(500, "<html></html>");
    advance(20s);
    EXPECT_EQ(datarefCatalogues(), 11);
    EXPECT_TRUE(link->isAtMainMenu());
    EXPECT_FALSE(link->hasEnded());
    answers.erase("/api/v2/datarefs");
    transport->datarefs = {{"sim/x", 12}};
    advance(2s);
    EXPECT_FALSE(link->isAtMainMenu());
}

TEST_F(MainMenuTest, RefusedCatalogueEndsTheLink) {
    answers["/api/v2/datarefs"] = httpResponse(403, "");
    advance(2s);
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(MainMenuTest, SilenceIsNoticedThere) {
    transport->latency = 1h;
    advance(8s);
    EXPECT_TRUE(link->isSilent());
    EXPECT_EQ(changes, 1);
    advance(7s);
    EXPECT_TRUE(link->hasEnded());
}

/// What a sample stands on while no values come.
class StandstillTest : public LinkFixture {
  protected:
    static inline const std::string latitudeTarget = "/api/v2/datarefs/12/value";
    static inline const std::string longitudeTarget = "/api/v2/datarefs/13/value";

    /// Values have come, and then none for a second.
    StandstillTest() {
        connect();
        watch();
        link->setPositionIds({12, 13});
        deliverValues({{12, "47.5"}, {13, "8.25"}, {14, "1"}});
        simulatorSays("47.5", "8.25");
        advance(1s);
    }

    void simulatorSays(const std::string& latitude, const std::string& longitude) {
        answers[latitudeTarget] = httpResponse(200, R"({"data":)" + latitude + "}");
        answers[longitudeTarget] = httpResponse(200, R"({"data":)" + longitude + "}");
    }

    void prove() {
        link->proveStandstill();
        VirtualClock::settle(io);
    }

    int comparisons() const { return requests("GET " + latitudeTarget); }
};

TEST_F(StandstillTest, AircraftThatStandsIsProvenByItsPosition) {
    const auto now = clock.now();
    EXPECT_FALSE(link->isProven(now));
    prove();
    EXPECT_TRUE(link->isProven(now));
    EXPECT_TRUE(link->isProven(now - 300ms));
    EXPECT_FALSE(link->isProven(now - 301ms));
    EXPECT_EQ(comparisons(), 1);
    EXPECT_EQ(requests("GET " + longitudeTarget), 1);
}

TEST_F(StandstillTest, StandsForTenMinutesProvenByAskingAtEachBeat) {
    for (int i = 0; i < 1200; ++i) {
        const auto now = clock.now();
        prove();
        ASSERT_TRUE(link->isProven(now)) << i;
        advance(500ms);
    }
    EXPECT_FALSE(link->hasEnded());
}

TEST_F(StandstillTest, OtherValuesThatGoOnProveNoPosition) {
    deliverValues({{14, "2"}});
    EXPECT_FALSE(link->isProven(clock.now()));
    simulatorSays("47.6", "8.25");
    prove();
    EXPECT_EQ(comparisons(), 1);
    EXPECT_FALSE(link->isProven(clock.now()));
}

TEST_F(StandstillTest, FreshValuesNeedNoQuestion) {
    deliverValues({{12, "47.5"}});
    advance(300ms);
    prove();
    EXPECT_EQ(comparisons(), 0);
    advance(1ms);
    prove();
    EXPECT_EQ(comparisons(), 1);
}

TEST_F(StandstillTest, ValuesOfOtherDatarefsAreNoProof) {
    deliverValues({{99, "2"}});
    EXPECT_FALSE(link->isProven(clock.now()));
    prove();
    EXPECT_EQ(comparisons(), 1);
}

TEST_F(StandstillTest, TinyDifferencesAreNone) {
    simulatorSays("47.5000009", "8.2499991");
    prove();
    EXPECT_TRUE(link->isProven(clock.now()));
}

TEST_F(StandstillTest, AircraftThatFliesWhileItsValuesStandEndsTheLinkAtTheSecondLook) {
    simulatorSays("47.500002", "8.25");
    prove();
    EXPECT_FALSE(link->isProven(clock.now()));
    EXPECT_FALSE(link->hasEnded()) << "it may have just begun to move";
    advance(500ms);
    prove();
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(StandstillTest, LongitudeCountsAsWell) {
    simulatorSays("47.5", "8.26");
    prove();
    advance(500ms);
    prove();
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(StandstillTest, ValuesThatComeAfterADifferenceClearIt) {
    simulatorSays("47.6", "8.25");
    prove();
    advance(500ms);
    deliverValues({{12, "47.55"}});
    advance(500ms);
    prove();
    EXPECT_FALSE(link->hasEnded());
    advance(500ms);
    prove();
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(StandstillTest, StandstillAfterADifferenceClearsIt) {
    simulatorSays("47.6", "8.25");
    prove();
    advance(500ms);
    simulatorSays("47.5", "8.25");
    prove();
    advance(500ms);
    simulatorSays("47.6", "8.25");
    prove();
    EXPECT_FALSE(link->hasEnded());
}

TEST_F(StandstillTest, ValuesThatComeMeanwhileSpeakForThemselves) {
    simulatorSays("47.6", "8.25");
    transport->latency = 100ms;
    for (int i = 0; i < 5; ++i) {
        prove();
        deliverValues({{12, "47.55"}});
        EXPECT_TRUE(link->isProven(clock.now()));
        advance(1s);
    }
    EXPECT_EQ(comparisons(), 5);
    EXPECT_FALSE(link->hasEnded());
}

TEST_F(StandstillTest, LateAnswerProvesOnlyTheTimeBeforeIt) {
    transport->latency = 600ms; // for each of the two
    const auto begin = clock.now();
    prove();
    advance(1200ms);
    EXPECT_FALSE(link->isProven(begin));
    EXPECT_FALSE(link->isProven(begin + 699ms));
    EXPECT_TRUE(link->isProven(begin + 700ms));
    EXPECT_TRUE(link->isProven(begin + 1200ms));
}

TEST_F(StandstillTest, QuestionsDoNotOverlap) {
    transport->latency = 1s;
    prove();
    advance(500ms);
    prove();
    EXPECT_EQ(comparisons(), 1);
    advance(5s);
    prove();
    EXPECT_EQ(comparisons(), 2);
}

TEST_F(StandstillTest, QuestionThatFailsProvesNothingAndMayBeAskedAgain) {
    transport->latency = 1h;
    prove();
    advance(3s);
    EXPECT_FALSE(link->isProven(clock.now()));
    transport->latency = 0ms;
    prove();
    EXPECT_TRUE(link->isProven(clock.now()));
}

TEST_F(StandstillTest, ServerThatDoesNotTellValuesIsBelievedToLive) {
    answers.erase(latitudeTarget);
    answers.erase(longitudeTarget);
    prove();
    EXPECT_GE(questions(), 1);
    EXPECT_TRUE(link->isProven(clock.now()));
}

TEST_F(StandstillTest, FlightThatHasGoneProvesNothingAndEndsTheLink) {
    answers[latitudeTarget] = httpResponse(404, "");
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":0})");
    prove();
    EXPECT_TRUE(link->hasEnded());
    EXPECT_FALSE(link->isProven(clock.now()));
}

TEST_F(StandstillTest, WithoutAPositionTheSimulatorIsOnlyAskedWhetherItLives) {
    link->setPositionIds({});
    prove();
    EXPECT_EQ(comparisons(), 0);
    EXPECT_EQ(questions(), 1);
    EXPECT_TRUE(link->isProven(clock.now()));
}

TEST_F(StandstillTest, RefusalProvesNothingAndEndsTheLink) {
    link->setPositionIds({});
    answers["/api/v2/datarefs/count"] = httpResponse(403, "");
    prove();
    EXPECT_TRUE(link->hasEnded());
    EXPECT_FALSE(link->isProven(clock.now()));
}

TEST_F(StandstillTest, LinkThatHasEndedAsksNothing) {
    link->close();
    prove();
    EXPECT_EQ(comparisons(), 0);
    EXPECT_FALSE(link->isProven(clock.now()));
}

} // namespace
} // namespace tarnly
