#include "TarnlyXPlane/Link/Subscriptions.hpp"

#include <gtest/gtest.h>

#include <numeric>

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using Ids = Subscriptions::Ids;

class SubscriptionsTest : public testing::Test {
  protected:
    std::vector<Ids> messagesFor(const Ids& ids) { return subscriptions.messagesFor(ids, now); }

    static Ids numbers(std::size_t count) {
        Ids ids(count);
        std::iota(ids.begin(), ids.end(), 1);
        return ids;
    }

    Clock::TimePoint now{1h};
    Subscriptions subscriptions;
};

TEST_F(SubscriptionsTest, AllIdsGoIntoOneMessageInTheirOrder) {
    EXPECT_EQ(messagesFor({7, 3, 5}), (std::vector<Ids>{{7, 3, 5}}));
}

TEST_F(SubscriptionsTest, NothingToAskIsNoMessage) { EXPECT_TRUE(messagesFor({}).empty()); }

TEST_F(SubscriptionsTest, AMessageHasAThousandIdsAtMost) {
    EXPECT_EQ(messagesFor(numbers(1000)).size(), 1U);
    Subscriptions other;
    const auto messages = other.messagesFor(numbers(2001), now);
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0].size(), 1000U);
    EXPECT_EQ(messages[1].front(), 1001);
    EXPECT_EQ(messages[1].size(), 1000U);
    EXPECT_EQ(messages[2], (Ids{2001}));
}

TEST_F(SubscriptionsTest, AnIdThatIsNamedTwiceIsAskedForOnce) {
    EXPECT_EQ(messagesFor({7, 7, 3, 7}), (std::vector<Ids>{{7, 3}}));
}

TEST_F(SubscriptionsTest, NothingIsAskedForAgainWithinThirtySeconds) {
    messagesFor({1, 2});
    now += 29999ms;
    EXPECT_EQ(messagesFor({1, 3, 2}), (std::vector<Ids>{{3}}));
    now += 1ms;
    EXPECT_EQ(messagesFor({1, 3, 2}), (std::vector<Ids>{{1, 2}}));
    EXPECT_TRUE(messagesFor({1, 3, 2}).empty());
}

TEST_F(SubscriptionsTest, RefusedMessageOfSeveralIdsIsAskedForSingly) {
    subscriptions.noteSent(4, {1, 2, 3});
    EXPECT_EQ(subscriptions.noteResult(4, false), (Ids{1, 2, 3}));
}

TEST_F(SubscriptionsTest, ARefusalCountsOnce) {
    subscriptions.noteSent(4, {1, 2, 3});
    subscriptions.noteResult(4, false);
    EXPECT_TRUE(subscriptions.noteResult(4, false).empty());
}

TEST_F(SubscriptionsTest, RefusedSingleIdIsNotAskedForAgain) {
    subscriptions.noteSent(4, {1});
    EXPECT_TRUE(subscriptions.noteResult(4, false).empty());
}

TEST_F(SubscriptionsTest, WhatWasGrantedIsNotAskedForAgain) {
    subscriptions.noteSent(4, {1, 2, 3});
    EXPECT_TRUE(subscriptions.noteResult(4, true).empty());
    EXPECT_TRUE(subscriptions.noteResult(4, false).empty());
}

TEST_F(SubscriptionsTest, AnswersToOtherRequestsConcernNoSubscription) {
    subscriptions.noteSent(4, {1, 2});
    EXPECT_TRUE(subscriptions.noteResult(5, false).empty());
    EXPECT_EQ(subscriptions.noteResult(4, false), (Ids{1, 2}));
}

TEST_F(SubscriptionsTest, OfRequestsThatAreNeverAnsweredOnlyTheLastAreRemembered) {
    for (std::int64_t reqId = 1; reqId <= 1001; ++reqId)
        subscriptions.noteSent(reqId, {reqId, -reqId});
    EXPECT_TRUE(subscriptions.noteResult(1, false).empty());
    EXPECT_EQ(subscriptions.noteResult(2, false), (Ids{2, -2}));
    EXPECT_EQ(subscriptions.noteResult(1001, false), (Ids{1001, -1001}));
}

} // namespace
} // namespace tarnly
