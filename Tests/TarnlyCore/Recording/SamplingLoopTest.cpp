#include "TarnlyCore/Recording/SamplingLoop.hpp"

#include <gtest/gtest.h>

#include "Support/VirtualClock.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

struct SamplingLoopTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    int pushes = 0;
    std::shared_ptr<SamplingLoop> loop =
        std::make_shared<SamplingLoop>(io.get_executor(), clock, [this] { ++pushes; });
};

TEST_F(SamplingLoopTest, PushesAtOnceAndThenTwiceASecond) {
    loop->start();
    clock.settle(io);
    EXPECT_EQ(pushes, 1);
    clock.advance(io, 499ms);
    EXPECT_EQ(pushes, 1);
    clock.advance(io, 1ms);
    EXPECT_EQ(pushes, 2);
    clock.advance(io, 10s);
    EXPECT_EQ(pushes, 22);
}

TEST_F(SamplingLoopTest, StartingTwiceRunsOneLoop) {
    loop->start();
    loop->start();
    clock.advance(io, 500ms);
    EXPECT_EQ(pushes, 2);
}

TEST_F(SamplingLoopTest, StopEndsItAndMayBeRepeated) {
    loop->stop();
    loop->start();
    clock.advance(io, 500ms);
    loop->stop();
    loop->stop();
    clock.advance(io, 10s);
    EXPECT_EQ(pushes, 2);
}

TEST_F(SamplingLoopTest, StartsAgainAfterStop) {
    loop->start();
    clock.settle(io);
    loop->stop();
    loop->start();
    clock.settle(io);
    EXPECT_EQ(pushes, 2);
    clock.advance(io, 500ms);
    EXPECT_EQ(pushes, 3);
}

TEST_F(SamplingLoopTest, EndsWhenTheLoopIsReleased) {
    loop->start();
    clock.settle(io);
    loop.reset();
    clock.advance(io, 10s);
    EXPECT_LE(pushes, 2);
    EXPECT_EQ(clock.sleeping(), 0U);
}

} // namespace
} // namespace tarnly
