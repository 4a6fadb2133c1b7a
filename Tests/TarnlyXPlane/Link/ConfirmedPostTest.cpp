#include <gtest/gtest.h>

#include "TarnlyXPlane/Link/LinkFixture.hpp"

namespace tarnly {
namespace {

using namespace test;

/// Whoever takes the connection of a command must be the simulator that the command's id is from.
class ConfirmedPostTest : public LinkFixture {
  protected:
    ConfirmedPostTest() {
        answers["/api/v2/command/818/activate"] = httpResponse(200, "null");
        connect();
    }

    std::shared_ptr<Waiting> beginPost() { return begin(link->post("command/818/activate", "")); }

    int posts() const { return requests("POST /api/v2/command/818/activate"); }
};

TEST_F(ConfirmedPostTest, IsSentWhenThePongHasCome) {
    const auto waiting = beginPost();
    EXPECT_EQ(webSocket().pings, 1);
    advance(490ms);
    EXPECT_EQ(posts(), 0);
    webSocket().deliverPong();
    advance(10ms);
    EXPECT_TRUE(waiting->hasSucceeded());
    EXPECT_EQ(posts(), 1);
}

TEST_F(ConfirmedPostTest, WherePingsAreAnsweredAtOnceNoTimePasses) {
    webSocket().answersPings = true;
    const auto before = clock.now();
    run(link->post("command/818/activate", ""));
    EXPECT_EQ(clock.now(), before);
    EXPECT_EQ(posts(), 1);
}

TEST_F(ConfirmedPostTest, EarlierPongsDoNotCount) {
    webSocket().deliverPong();
    const auto waiting = beginPost();
    advance(1s);
    EXPECT_EQ(posts(), 0);
    webSocket().deliverPong();
    advance(10ms);
    EXPECT_TRUE(waiting->hasSucceeded());
    EXPECT_EQ(posts(), 1);
}

TEST_F(ConfirmedPostTest, NothingIsSentWhenTheLinkEndsMeanwhile) {
    const auto waiting = beginPost();
    advance(100ms);
    webSocket().cancel();
    advance(10ms);
    EXPECT_TRUE(waiting->hasFailedWith<LinkEnded>());
    advance(1min);
    EXPECT_EQ(posts(), 0);
}

TEST_F(ConfirmedPostTest, NothingIsSentOnALinkThatHasEnded) {
    webSocket().cancel();
    VirtualClock::settle(io);
    EXPECT_TRUE(beginPost()->hasFailedWith<LinkEnded>());
    EXPECT_EQ(posts(), 0);
}

TEST_F(ConfirmedPostTest, LinkThatEndsWithThePongSendsNothing) {
    const auto waiting = beginPost();
    webSocket().deliverPong();
    webSocket().cancel();
    advance(10ms);
    EXPECT_TRUE(waiting->hasFailedWith<LinkEnded>());
    EXPECT_EQ(posts(), 0);
}

TEST_F(ConfirmedPostTest, WherePingsWereNeverAnsweredItIsSentAfterHalfASecond) {
    const auto waiting = beginPost();
    advance(499ms);
    EXPECT_EQ(posts(), 0);
    advance(1ms);
    EXPECT_TRUE(waiting->hasSucceeded());
    EXPECT_EQ(posts(), 1);
}

TEST_F(ConfirmedPostTest, WherePingsUsedToBeAnsweredNothingIsSentWithoutOne) {
    webSocket().deliverPong();
    const auto waiting = beginPost();
    advance(1999ms);
    EXPECT_FALSE(waiting->isDone);
    advance(1ms);
    ASSERT_TRUE(waiting->isDone);
    try {
        std::rethrow_exception(waiting->error);
    } catch (const NetworkError& error) {
        EXPECT_EQ(error, NetworkError(NetworkError::Case::timedOut, "127.0.0.1:8086"));
    }
    EXPECT_FALSE(waiting->hasFailedWith<LinkEnded>());
    EXPECT_EQ(posts(), 0);
}

} // namespace
} // namespace tarnly
