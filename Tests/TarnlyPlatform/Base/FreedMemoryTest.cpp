#include "TarnlyPlatform/Base/FreedMemory.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

struct FreedMemoryTest : testing::Test {
    boost::asio::io_context io;
    WorkerPool workers{1};
    test::VirtualClock clock;
    std::atomic<int> given = 0;
    FreedMemory memory{io.get_executor(), workers, clock, [this] { ++given; }};

    void expectGivenBack(int times) {
        EXPECT_TRUE(test::runUntil(io, [&] { return given >= times; }));
        test::VirtualClock::settle(io);
        EXPECT_EQ(given, times);
    }
};

TEST_F(FreedMemoryTest, IsGivenBackWhenNoMoreComes) {
    memory.note();
    clock.advance(io, FreedMemory::quiet - 1ms);
    EXPECT_EQ(given, 0);
    clock.advance(io, 1ms);
    expectGivenBack(1);
}

TEST_F(FreedMemoryTest, IsGivenBackOnceForAllThatComesClose) {
    for (int i = 0; i < 10; ++i) {
        memory.note();
        clock.advance(io, FreedMemory::quiet / 10);
    }
    EXPECT_EQ(given, 0);
    clock.advance(io, 2 * FreedMemory::quiet);
    expectGivenBack(1);
    EXPECT_EQ(clock.sleeping(), 0U);
}

TEST_F(FreedMemoryTest, IsGivenBackAgainForWhatComesLater) {
    memory.note();
    clock.advance(io, FreedMemory::quiet);
    expectGivenBack(1);
    EXPECT_TRUE(test::runUntil(io, [&] {
        memory.note(); // the task may not have noticed yet that the worker has done its work
        return clock.sleeping() > 0;
    }));
    clock.advance(io, 2 * FreedMemory::quiet);
    expectGivenBack(2);
}

TEST_F(FreedMemoryTest, IsGivenBackThoughSomethingComesAllTheTime) {
    for (int i = 0; i < 6; ++i) {
        memory.note();
        EXPECT_EQ(given, 0);
        clock.advance(io, 1s);
    }
    expectGivenBack(1);
}

TEST_F(FreedMemoryTest, NothingIsGivenBackWithoutANote) {
    clock.advance(io, 10 * FreedMemory::quiet);
    EXPECT_EQ(given, 0);
    EXPECT_EQ(clock.sleeping(), 0U);
}

} // namespace
} // namespace tarnly
