#include "TarnlyPlatform/Base/TaskGroup.hpp"

#include <gtest/gtest.h>

#include <boost/asio/async_result.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

/// An operation of a library that never comes to its end, because its handler is dropped.
class Dropped {
  public:
    Task<> wait() {
        auto start = [this](auto handler) {
            auto kept = std::make_shared<decltype(handler)>(std::move(handler));
            handler_ = kept;
        };
        co_await boost::asio::async_initiate<const boost::asio::use_awaitable_t<>, void()>(
            start, boost::asio::use_awaitable);
    }

    void drop() { handler_.reset(); }

  private:
    std::shared_ptr<void> handler_;
};

class TaskGroupTest : public ::testing::Test {
  protected:
    Task<> sleep(Clock::Duration duration) {
        co_await clock.sleepFor(duration);
        ++woken;
    }

    Task<> fail(std::string text) {
        co_await clock.sleepFor(1s);
        throw std::runtime_error(text);
    }

    /// Waits for what never comes, as a coroutine does that reads from a silent peer.
    Task<> wait() {
        const auto keepsAlive = alive;
        Event never(io.get_executor());
        for (;;)
            co_await never.wait();
    }

    void settle() { test::VirtualClock::settle(io); }

    boost::asio::io_context io;
    test::VirtualClock clock;
    std::shared_ptr<int> alive = std::make_shared<int>();
    int woken = 0;
    std::optional<TaskGroup> group{io.get_executor()};
};

std::string textOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        return error.what();
    }
}

TEST_F(TaskGroupTest, TasksRunSideBySideAndLeave) {
    group->spawn(sleep(1s), dropFailure);
    group->spawn(sleep(2s), dropFailure);
    EXPECT_EQ(group->size(), 2U);
    clock.advance(io, 1s);
    EXPECT_EQ(woken, 1);
    EXPECT_EQ(group->size(), 1U);
    clock.advance(io, 1s);
    EXPECT_EQ(group->size(), 0U);
}

TEST_F(TaskGroupTest, AFailureIsToldOnceAndConcernsNoOtherTask) {
    std::string told;
    group->spawn(fail("broken"), [&](const std::exception_ptr& failure) { told += textOf(failure); });
    group->spawn(sleep(2s), dropFailure);
    clock.advance(io, 2s);
    EXPECT_EQ(told, "broken");
    EXPECT_EQ(woken, 1);
}

TEST_F(TaskGroupTest, ATaskThatIsLostHasFailed) {
    Dropped dropped;
    std::vector<std::string> failures;
    group->spawn(dropped.wait(),
                 [&](const std::exception_ptr& failure) { failures.push_back(textOf(failure)); });
    settle();
    dropped.drop();
    settle();
    EXPECT_EQ(failures, std::vector<std::string>{"std::bad_alloc"});
    EXPECT_EQ(group->size(), 0U);
}

TEST_F(TaskGroupTest, ATaskThatIsLostAfterItWasToldToEndIsNoFailure) {
    Dropped dropped;
    bool hasFailed = false;
    group->spawn(dropped.wait(), [&](const std::exception_ptr&) { hasFailed = true; });
    settle();
    group->cancel();
    dropped.drop();
    settle();
    EXPECT_FALSE(hasFailed);
    EXPECT_EQ(group->size(), 0U);
}

TEST_F(TaskGroupTest, WhatIsKeptUpBeginsAgainWhenItIsLostAndNotWhenItIsToldToEnd) {
    Dropped dropped;
    int begun = 0;
    group->keepUp([&] {
        ++begun;
        return dropped.wait();
    });
    settle();
    dropped.drop();
    settle();
    EXPECT_EQ(begun, 2);
    EXPECT_EQ(group->size(), 1U);
    group.reset();
    dropped.drop();
    settle();
    EXPECT_EQ(begun, 2);
}

TEST_F(TaskGroupTest, WhatIsKeptUpBeginsThoughItLacksMemoryAtFirst) {
    Dropped dropped;
    int tries = 0;
    group->keepUp([&] {
        if (++tries == 1) throw std::bad_alloc();
        return dropped.wait();
    });
    settle();
    EXPECT_EQ(tries, 2);
    EXPECT_EQ(group->size(), 1U);
}

TEST_F(TaskGroupTest, CancellingEndsWhatWaitsForEverAndIsNoFailure) {
    bool failed = false;
    group->spawn(wait(), [&](const std::exception_ptr&) { failed = true; });
    settle();
    EXPECT_EQ(alive.use_count(), 2);
    group->cancel();
    group->cancel();
    settle();
    EXPECT_EQ(group->size(), 0U);
    EXPECT_EQ(alive.use_count(), 1);
    EXPECT_FALSE(failed);
}

TEST_F(TaskGroupTest, DestructionCancels) {
    group->spawn(wait(), dropFailure);
    settle();
    group.reset();
    settle();
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(TaskGroupTest, ATaskThatEndsByItselfMayBeToldToAsWell) {
    Event mayEnd(io.get_executor());
    group->spawn(mayEnd.wait(), dropFailure);
    settle();
    mayEnd.notifyAll();
    group->cancel();
    settle();
    EXPECT_EQ(group->size(), 0U);
}

TEST_F(TaskGroupTest, ATaskMayTellItsOwnGroupToEndBeforeItEverWaits) {
    const auto cancelAtOnce = [](TaskGroup& own) -> Task<> {
        own.cancel();
        co_return;
    };
    boost::asio::post(io, [&] { group->spawn(cancelAtOnce(*group), dropFailure); });
    settle();
    EXPECT_EQ(group->size(), 0U);
}

TEST_F(TaskGroupTest, ATaskThatIsToldToEndBeforeItBeginsEnds) {
    group->spawn(wait(), dropFailure);
    group->cancel();
    settle();
    EXPECT_EQ(group->size(), 0U);
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(TaskGroupTest, AGroupGoesOnAfterItWasCancelled) {
    group->spawn(wait(), dropFailure);
    settle();
    group->cancel();
    std::string told;
    group->spawn(fail("later"), [&](const std::exception_ptr& failure) { told = textOf(failure); });
    clock.advance(io, 1s);
    EXPECT_EQ(told, "later");
}

TEST_F(TaskGroupTest, JoiningReturnsWhenTheLastTaskHasEnded) {
    group->spawn(sleep(1s), dropFailure);
    group->spawn(sleep(2s), dropFailure);
    const auto begin = clock.now();
    EXPECT_TRUE(clock.run(io, group->join(clock, 10s)));
    EXPECT_EQ(clock.now() - begin, 2s);
}

TEST_F(TaskGroupTest, JoiningGivesUpAtItsLimit) {
    group->spawn(wait(), dropFailure);
    const auto begin = clock.now();
    EXPECT_FALSE(clock.run(io, group->join(clock, 300ms)));
    EXPECT_EQ(clock.now() - begin, 300ms);
    EXPECT_EQ(group->size(), 1U);
}

TEST_F(TaskGroupTest, JoiningAnEmptyGroupDoesNotWait) {
    const auto begin = clock.now();
    EXPECT_TRUE(clock.run(io, group->join(clock, 10s)));
    EXPECT_EQ(clock.now(), begin);
}

TEST_F(TaskGroupTest, WaitingForAnEventEndsWithItOrWithItsTime) {
    Event event(io.get_executor());
    const auto begin = clock.now();
    clock.run(io, waitFor(event, clock, 5s));
    EXPECT_EQ(clock.now() - begin, 5s);

    group->spawn(waitFor(event, clock, 5s), dropFailure);
    settle();
    event.notifyAll();
    settle();
    EXPECT_EQ(group->size(), 0U);
    EXPECT_EQ(clock.sleeping(), 0U);
}

} // namespace
} // namespace tarnly
