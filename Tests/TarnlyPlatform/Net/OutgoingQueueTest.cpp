#include "TarnlyPlatform/Net/OutgoingQueue.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

constexpr std::size_t all = 1 << 30;

struct OutgoingQueueTest : testing::Test {
    OutgoingQueue queue;

    std::string next(std::size_t limit = all) const {
        const auto [head, body] = queue.next(limit);
        return std::string(head) + std::string(body);
    }

    /// Writes what goes out next, `limit` bytes at most.
    std::string write(std::size_t limit = all) {
        auto written = next(limit);
        queue.noteWritten(written.size());
        return written;
    }
};

TEST_F(OutgoingQueueTest, NothingWaitsInAnEmptyOne) {
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(next(), "");
    EXPECT_EQ(queue.size(), 0U);
    EXPECT_EQ(queue.backlog(), 0U);
}

TEST_F(OutgoingQueueTest, ShortFramesLeaveInOneWrite) {
    queue.push("1", "one");
    queue.push("2", "two");
    EXPECT_EQ(queue.size(), 8U);
    EXPECT_EQ(write(), "1one2two");
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(queue.queued(), 8U);
    EXPECT_EQ(queue.written(), 8U);
}

TEST_F(OutgoingQueueTest, FramesThatAreJoinedStayBelowTheirSize) {
    const std::string payload(4000, 'x');
    for (int i = 0; i < 10; ++i)
        queue.push("h", payload);
    EXPECT_EQ(next().size(), 4 * 4001U);
    std::size_t total = 0;
    while (!queue.isEmpty())
        total += write().size();
    EXPECT_EQ(total, 10 * 4001U);
}

TEST_F(OutgoingQueueTest, ALongTextGoesWithItsHeaderAndWithoutACopy) {
    std::string payload(100'000, 'x');
    const auto* where = payload.data();
    queue.push("head", std::move(payload));
    const auto [head, body] = queue.next(all);
    EXPECT_EQ(head, "head");
    EXPECT_EQ(body.data(), where);
    EXPECT_EQ(body.size(), 100'000U);
}

TEST_F(OutgoingQueueTest, AWriteMayEndAnywhere) {
    const std::string payload(5000, 'y');
    const std::string whole = "head" + payload;
    for (const std::size_t step : {1U, 3U, 4U, 5U, 4999U}) {
        queue.push("head", payload);
        std::string written;
        while (!queue.isEmpty())
            written += write(step);
        EXPECT_EQ(written, whole) << step;
    }
}

TEST_F(OutgoingQueueTest, UnsolicitedFramesCountUntilTheyHaveGone) {
    queue.push("h", std::string(10'000, 'a'));
    queue.push("h", std::string(20'000, 'b'), true);
    queue.push("h", "short", true);
    EXPECT_EQ(queue.backlog(), 20'005U);
    write();
    EXPECT_EQ(queue.backlog(), 20'005U);
    write(20'000);
    EXPECT_EQ(queue.backlog(), 20'005U);
    write();
    EXPECT_EQ(queue.backlog(), 5U);
    write();
    EXPECT_EQ(queue.backlog(), 0U);
    EXPECT_EQ(queue.written(), queue.queued());
}

TEST_F(OutgoingQueueTest, AnUrgentFrameGoesBeforeWhatHasNotBegun) {
    queue.push("1", "one");
    queue.pushUrgent("pong");
    EXPECT_EQ(write(), "pong");
    EXPECT_EQ(write(2), "1o");
    queue.push("2", std::string(5000, 'x'));
    queue.pushUrgent("pong");
    EXPECT_EQ(write(), "ne");
    EXPECT_EQ(write(), "pong");
    EXPECT_EQ(write().size(), 5001U);
    EXPECT_EQ(queue.written(), queue.queued());
}

TEST_F(OutgoingQueueTest, OfUrgentFramesTheLastCounts) {
    queue.push("1", std::string(5000, 'x'));
    write(1);
    queue.pushUrgent("first");
    queue.pushUrgent("second one");
    write();
    EXPECT_EQ(write(), "second one");
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(queue.written(), queue.queued());
}

TEST_F(OutgoingQueueTest, AnUrgentFrameThatHasBegunIsFinished) {
    queue.pushUrgent("first");
    EXPECT_EQ(write(2), "fi");
    queue.pushUrgent("second");
    EXPECT_EQ(write(), "rst");
    EXPECT_EQ(write(), "second");
}

} // namespace
} // namespace tarnly
