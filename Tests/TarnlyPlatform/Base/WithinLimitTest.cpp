#include "TarnlyPlatform/Base/WithinLimit.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "Support/VirtualClock.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

/// A result that is not there before it is made.
struct Reading {
    explicit Reading(std::string given) : text(std::move(given)) {}

    std::string text;
};

class WithinLimitTest : public ::testing::Test {
  protected:
    Task<Reading> read(Clock::Duration duration) {
        const auto keepsAlive = alive;
        co_await clock.sleepFor(duration);
        co_return Reading("read");
    }

    Task<int> failAfter(Clock::Duration duration) {
        const auto keepsAlive = alive;
        co_await clock.sleepFor(duration);
        throw std::runtime_error("broken");
    }

    Task<> pause(Clock::Duration duration) {
        co_await clock.sleepFor(duration);
        isPauseOver = true;
    }

    Task<int> answerAtOnce() { co_return 42; }

    /// Is told to end, and does not mind.
    Task<> endLate() {
        const auto keepsAlive = alive;
        Event never(io.get_executor());
        co_await never.wait();
        co_await boost::asio::this_coro::throw_if_cancelled(false);
        throw std::runtime_error("too late to matter");
    }

    Task<> readInto(std::optional<Reading>& result) {
        result = co_await withinLimit(clock, 10s, read(5s));
        hasReturned = true;
    }

    boost::asio::io_context io;
    test::VirtualClock clock;
    const Clock::TimePoint begin = clock.now();
    std::shared_ptr<int> alive = std::make_shared<int>();
    bool isPauseOver = false;
    bool hasReturned = false;
};

TEST_F(WithinLimitTest, WhatComesInTimeIsAnsweredAtOnce) {
    const auto reading = clock.run(io, withinLimit(clock, 10s, read(3s)));
    ASSERT_TRUE(reading);
    EXPECT_EQ(reading->text, "read");
    EXPECT_EQ(clock.now() - begin, 3s);
    test::VirtualClock::settle(io);
    EXPECT_EQ(clock.sleeping(), 0U);
}

TEST_F(WithinLimitTest, ATaskThatNeverWaitsNeedsNoTime) {
    EXPECT_EQ(clock.run(io, withinLimit(clock, 0s, answerAtOnce())), 42);
    EXPECT_EQ(clock.now(), begin);
}

TEST_F(WithinLimitTest, WhatComesTooLateIsAbsentAndIsToldToEnd) {
    const auto reading = clock.run(io, withinLimit(clock, 2s, read(3s)));
    EXPECT_FALSE(reading);
    EXPECT_EQ(clock.now() - begin, 2s);
    test::VirtualClock::settle(io);
    EXPECT_EQ(clock.sleeping(), 0U);
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(WithinLimitTest, ATaskWithoutAResultSaysWhetherItHasEnded) {
    EXPECT_FALSE(clock.run(io, withinLimit(clock, 2s, pause(3s))));
    EXPECT_FALSE(isPauseOver);
    EXPECT_TRUE(clock.run(io, withinLimit(clock, 4s, pause(3s))));
    EXPECT_TRUE(isPauseOver);
    EXPECT_EQ(clock.now() - begin, 5s);
}

TEST_F(WithinLimitTest, WhatIsThrownInTimeIsThrown) {
    std::string told;
    try {
        clock.run(io, withinLimit(clock, 10s, failAfter(3s)));
    } catch (const std::runtime_error& error) {
        told = error.what();
    }
    EXPECT_EQ(told, "broken");
    EXPECT_EQ(clock.now() - begin, 3s);
}

TEST_F(WithinLimitTest, WhatIsThrownTooLateIsDropped) {
    EXPECT_FALSE(clock.run(io, withinLimit(clock, 2s, failAfter(3s))));
    clock.advance(io, 10s);
    EXPECT_EQ(alive.use_count(), 1);

    EXPECT_FALSE(clock.run(io, withinLimit(clock, 2s, endLate())));
    test::VirtualClock::settle(io);
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(WithinLimitTest, WhoIsToldToEndWhileWaitingTakesTheTaskAlong) {
    std::optional<Reading> result;
    TaskGroup group(io.get_executor());
    group.spawn(readInto(result), dropFailure);
    clock.advance(io, 1s);
    EXPECT_EQ(alive.use_count(), 2);
    group.cancel();
    test::VirtualClock::settle(io);
    EXPECT_EQ(group.size(), 0U);
    EXPECT_EQ(alive.use_count(), 1);
    EXPECT_EQ(clock.sleeping(), 0U);
    EXPECT_FALSE(hasReturned);
}

} // namespace
} // namespace tarnly
