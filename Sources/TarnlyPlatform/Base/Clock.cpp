#include "TarnlyPlatform/Base/Clock.hpp"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace tarnly {

Clock::TimePoint SystemClock::now() const { return std::chrono::steady_clock::now(); }

Task<> SystemClock::sleepFor(Duration duration) {
    auto executor = co_await boost::asio::this_coro::executor;
    boost::asio::steady_timer timer(executor, duration);
    co_await timer.async_wait(boost::asio::use_awaitable);
}

} // namespace tarnly
