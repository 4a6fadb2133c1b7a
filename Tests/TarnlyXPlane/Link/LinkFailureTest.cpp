#include "TarnlyXPlane/Link/LinkFailure.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using Case = NetworkError::Case;
using Kind = SimulatorStage::Kind;

LinkFailure failureOf(Case which, const std::string& text) {
    return failureOfConnecting(NetworkError(which, text));
}

TEST(LinkFailure, WhereNothingAnswersTheSimulatorIsToBeStarted) {
    const auto failure = failureOf(Case::connectionFailed, "127.0.0.1:8086: Connection refused");
    EXPECT_STREQ(failure.what(),
                 R"(connectionFailed("127.0.0.1:8086: Connection refused: the simulator is not running: )"
                 R"(start X-Plane 12.1.4 or later"))");
    EXPECT_EQ(failure.which(), Case::connectionFailed);
    EXPECT_EQ(failure.stage().kind, Kind::notRunning);
    EXPECT_EQ(failure.stage().detail, "");
}

TEST(LinkFailure, HostThatNobodyKnowsIsAMatterOfTheAddress) {
    const auto failure = failureOf(Case::connectionFailed, "sim:8086: Host not found (authoritative)");
    EXPECT_EQ(failure.payload(), "sim:8086: Host not found (authoritative): check the simulator's address");
    EXPECT_EQ(failure.stage().kind, Kind::notRunning);
}

TEST(LinkFailure, WhatDoesNotAnswerIsSilentAndItsErrorUnchanged) {
    const auto failure = failureOf(Case::timedOut, "127.0.0.1:8086");
    EXPECT_STREQ(failure.what(), R"(timedOut("127.0.0.1:8086"))");
    EXPECT_EQ(failure.stage().kind, Kind::silent);
}

TEST(LinkFailure, OtherFailuresKeepTheirTextWithoutACure) {
    for (const auto which : {Case::connectionClosed, Case::invalidResponse, Case::sendFailed}) {
        const auto failure = failureOf(which, "127.0.0.1:8086: odd");
        EXPECT_EQ(failure, NetworkError(which, "127.0.0.1:8086: odd"));
        EXPECT_EQ(failure.stage().kind, Kind::notRunning);
    }
}

TEST(LinkFailure, AnswerThatIsNoneIsSomebodyElses) {
    EXPECT_EQ(failureOf(Case::invalidResponse, "odd").stage().detail, "something else answers on its port");
    EXPECT_EQ(failureOf(Case::connectionClosed, "odd").stage().detail, "");
}

TEST(LinkFailure, RefusalHasTheSimulatorsOwnWordsAndTheCure) {
    const auto failure = refusal("http://h:1/datarefs: HTTP status 403", "Traffic is off");
    EXPECT_STREQ(
        failure.what(),
        R"(connectionFailed("http://h:1/datarefs: HTTP status 403: Traffic is off: )"
        R"(the simulator refuses connections: allow incoming traffic in the simulator's network settings"))");
    EXPECT_EQ(failure.stage().kind, Kind::refusing);
    EXPECT_EQ(failure.stage().detail, "Traffic is off");
}

TEST(LinkFailure, RefusalWithoutWordsHasCauseAndCureAlone) {
    const auto failure = refusal("http://h:1/datarefs: HTTP status 403", "");
    EXPECT_EQ(failure.payload(),
              "http://h:1/datarefs: HTTP status 403: the simulator refuses connections: "
              "allow incoming traffic in the simulator's network settings");
    EXPECT_EQ(failure.stage().kind, Kind::refusing);
    EXPECT_EQ(failure.stage().detail, "");
}

TEST(LinkFailure, TooOldSaysWhatIsNeededAndKeepsTheVersion) {
    const NetworkError notFound(Case::connectionFailed, "http://h:1/datarefs: HTTP status 404");
    const auto failure = tooOld(notFound, "12.1.2");
    EXPECT_EQ(failure.payload(),
              "http://h:1/datarefs: HTTP status 404: the simulator is too old: "
              "X-Plane 12.1.4 or later is needed");
    EXPECT_EQ(failure.stage().kind, Kind::tooOld);
    EXPECT_EQ(failure.stage().detail, "12.1.2");
    EXPECT_EQ(tooOld(notFound, "").stage().detail, "");
}

} // namespace
} // namespace tarnly
