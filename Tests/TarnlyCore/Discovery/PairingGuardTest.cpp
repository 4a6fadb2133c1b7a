#include "TarnlyCore/Discovery/PairingGuard.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <string>
#include <vector>

#include "Support/Networks.hpp"
#include "Support/VirtualClock.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using test::networkOf;
using testing::ElementsAre;
using testing::IsEmpty;

struct PairingGuardTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    std::shared_ptr<PairingGuard> held = std::make_shared<PairingGuard>(io.get_executor(), clock);
    PairingGuard& guard = *held;
    const PeerNetwork guesser = networkOf("10.0.0.1");
    std::vector<std::chrono::seconds> answered; // after so long from the beginning
    const Clock::TimePoint begin = clock.now();

    void refuse(int times) {
        for (int i = 0; i < times; ++i)
            guard.note(guesser, false);
    }

    /// Those that still wait at the end of a test keep the guard for that long.
    Task<> attempt(std::shared_ptr<PairingGuard> /*kept*/, bool isRight, std::shared_ptr<bool> isAbandoned) {
        auto asked = [isAbandoned] { return *isAbandoned; };
        co_await guard.waitForTurn(guesser, std::move(asked));
        if (*isAbandoned) co_return;
        answered.push_back(std::chrono::floor<std::chrono::seconds>(clock.now() - begin));
        guard.note(guesser, isRight);
    }

    std::shared_ptr<bool> startAttempt(bool isRight = false) {
        auto isAbandoned = std::make_shared<bool>(false);
        boost::asio::co_spawn(io, attempt(held, isRight, isAbandoned), [](const std::exception_ptr&) {});
        clock.advance(io, 0s);
        return isAbandoned;
    }
};

TEST_F(PairingGuardTest, AnswersAreHandedOn) {
    std::vector<std::string> told;
    PairingGuard telling(io.get_executor(), clock, [&](const PeerNetwork& network, bool isAccepted) {
        told.push_back(network.text() + (isAccepted ? " in" : " out"));
    });
    telling.note(guesser, false);
    telling.note(networkOf("10.0.0.2"), true);
    EXPECT_THAT(told, ElementsAre("10.0.0.1 out", "10.0.0.2 in"));
}

TEST_F(PairingGuardTest, TheFirstRefusalsAreAnsweredAtOnce) {
    EXPECT_TRUE(guard.isPrompt(guesser));
    refuse(4);
    EXPECT_TRUE(guard.isPrompt(guesser));
    refuse(1);
    EXPECT_FALSE(guard.isPrompt(guesser));
    EXPECT_TRUE(guard.isPrompt(networkOf("10.0.0.2")));
}

TEST_F(PairingGuardTest, ThenEachAnswerComesLaterOneAfterTheOther) {
    refuse(5);
    for (int i = 0; i < 6; ++i)
        startAttempt();
    clock.advance(io, 100s);
    EXPECT_THAT(answered, ElementsAre(1s, 3s, 7s, 15s, 23s, 31s));
}

TEST_F(PairingGuardTest, ARightPasswordWaitsTooAndClearsTheSlate) {
    refuse(6);
    startAttempt(true);
    startAttempt();
    EXPECT_FALSE(guard.isPrompt(guesser));
    clock.advance(io, 2s);
    EXPECT_THAT(answered, ElementsAre(2s, 2s));
    EXPECT_TRUE(guard.isPrompt(guesser));
}

TEST_F(PairingGuardTest, SoManyWaitAndNoMore) {
    refuse(5);
    std::vector<std::shared_ptr<bool>> attempts;
    for (std::size_t i = 0; i < PairingGuard::mostWaiting; ++i) {
        EXPECT_TRUE(guard.hasRoom(guesser));
        attempts.push_back(startAttempt());
    }
    EXPECT_FALSE(guard.hasRoom(guesser));
    EXPECT_TRUE(guard.hasRoom(networkOf("10.0.0.2")));
    *attempts[3] = true; // its connection has gone
    EXPECT_TRUE(guard.hasRoom(guesser));
}

TEST_F(PairingGuardTest, WhoHasGoneLetsTheNextOneIn) {
    refuse(9);
    const auto first = startAttempt();
    const auto second = startAttempt();
    startAttempt();
    clock.advance(io, 3s);
    *second = true;
    *first = true;
    guard.wake();
    clock.advance(io, 7s);
    EXPECT_THAT(answered, IsEmpty());
    clock.advance(io, 1s);
    EXPECT_THAT(answered, ElementsAre(11s));
}

TEST_F(PairingGuardTest, RefusalsAreForgottenTenMinutesAfterTheLastOne) {
    refuse(4);
    clock.advance(io, 9min);
    refuse(4);
    clock.advance(io, 9min + 59s);
    EXPECT_FALSE(guard.isPrompt(guesser));
    clock.advance(io, 1s);
    EXPECT_TRUE(guard.isPrompt(guesser));
    refuse(4);
    EXPECT_TRUE(guard.isPrompt(guesser));
}

TEST_F(PairingGuardTest, OfVeryManyNetworksTheLongestAgoAreForgotten) {
    refuse(5);
    clock.advance(io, 1s);
    for (unsigned i = 1; i <= PairingGuard::mostNetworks; ++i) {
        guard.note(PeerNetwork(boost::asio::ip::address_v4(0x0B000000U + i)), false);
        EXPECT_LE(guard.knownNetworks(), PairingGuard::mostNetworks);
    }
    EXPECT_TRUE(guard.isPrompt(guesser));
    EXPECT_EQ(guard.knownNetworks(), PairingGuard::mostNetworks);
}

} // namespace
} // namespace tarnly
