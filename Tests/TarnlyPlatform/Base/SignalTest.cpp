#include "TarnlyPlatform/Base/Signal.hpp"

#include <gtest/gtest.h>

#include <boost/asio/this_coro.hpp>
#include <thread>

#include "Support/RunTask.hpp"

namespace tarnly {
namespace {

using Raise = std::function<void()>;

/// Hands `start` what raises the signal, and waits for that.
Task<> waitAfter(std::function<void(Raise)> start) {
    const auto executor = co_await boost::asio::this_coro::executor;
    Signal signal(executor);
    start(signal.raiser());
    co_await signal.wait();
}

TEST(Signal, WakesWhenAnotherThreadSaysSo) {
    boost::asio::io_context io;
    std::jthread other;
    test::runTask(io, waitAfter([&](const Raise& raise) { other = std::jthread(raise); }));
}

TEST(Signal, MayBeRaisedBeforeAnybodyWaitsAndAgain) {
    boost::asio::io_context io;
    test::runTask(io, waitAfter([](const Raise& raise) {
                      raise();
                      raise();
                  }));
}

TEST(Signal, WaitsUntilItIsRaised) {
    boost::asio::io_context io;
    Raise raise;
    bool isDone = false;
    boost::asio::co_spawn(io, waitAfter([&](Raise given) { raise = std::move(given); }),
                          [&](const std::exception_ptr&) { isDone = true; });
    io.poll();
    EXPECT_FALSE(isDone);
    raise();
    EXPECT_TRUE(test::runUntil(io, [&] { return isDone; }));
}

TEST(Signal, MayBeRaisedWhenItAndItsExecutorHaveGone) {
    Raise raise;
    {
        boost::asio::io_context io;
        boost::asio::co_spawn(io, waitAfter([&](Raise given) { raise = std::move(given); }),
                              [](const std::exception_ptr&) {});
        io.poll();
    }
    raise();
}

} // namespace
} // namespace tarnly
