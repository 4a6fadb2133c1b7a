#pragma once

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/system/system_error.hpp>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "TarnlyPlatform/Base/Clock.hpp"

namespace tarnly::test {

/// A clock whose hands the test turns: nobody really waits. Who is told to end while asleep fails, as with
/// the system's clock.
class VirtualClock final : public Clock {
  public:
    TimePoint now() const override { return now_; }

    Task<> sleepFor(Duration duration) override {
        auto executor = co_await boost::asio::this_coro::executor;
        auto timer = std::make_shared<boost::asio::steady_timer>(executor, TimePoint::max());
        sleepers_.emplace(now_ + duration, timer);
        boost::system::error_code cancelled;
        auto token = boost::asio::redirect_error(boost::asio::use_awaitable, cancelled);
        co_await timer->async_wait(token);
        const bool wasTold =
            std::erase_if(sleepers_, [&](const auto& kept) { return kept.second == timer; }) > 0;
        if (wasTold) throw boost::system::system_error(boost::asio::error::operation_aborted);
    }

    /// Lets `io` do all it can without the time going on.
    static void settle(boost::asio::io_context& io) {
        io.restart();
        io.poll();
    }

    /// Lets `duration` pass, waking the sleepers one by one in the order of their times.
    void advance(boost::asio::io_context& io, Duration duration) {
        const auto end = now_ + duration;
        settle(io);
        while (!sleepers_.empty() && sleepers_.begin()->first <= end) {
            wakeFirst();
            settle(io);
        }
        now_ = end;
    }

    /// Runs `task` to its end, letting time pass whenever all wait; throws what it threw, and when it can
    /// never end.
    template <typename T>
    T run(boost::asio::io_context& io, Task<T> task) {
        std::exception_ptr error;
        bool done = false;
        std::conditional_t<std::is_void_v<T>, std::optional<int>, std::optional<T>> result;
        if constexpr (std::is_void_v<T>) {
            boost::asio::co_spawn(io, std::move(task), [&](std::exception_ptr failure) {
                error = failure;
                done = true;
            });
        } else {
            boost::asio::co_spawn(io, std::move(task), [&](std::exception_ptr failure, T value) {
                error = failure;
                if (!failure) result.emplace(std::move(value));
                done = true;
            });
        }
        settle(io);
        while (!done) {
            if (sleepers_.empty()) throw std::logic_error("the task waits for something that never comes");
            wakeFirst();
            settle(io);
        }
        if (error) std::rethrow_exception(error);
        if constexpr (!std::is_void_v<T>) return std::move(*result);
    }

    std::size_t sleeping() const { return sleepers_.size(); }

  private:
    void wakeFirst() {
        const auto first = sleepers_.begin();
        now_ = std::max(now_, first->first);
        const auto timer = first->second;
        sleepers_.erase(first);
        timer->cancel();
    }

    TimePoint now_{std::chrono::hours(1)};
    std::multimap<TimePoint, std::shared_ptr<boost::asio::steady_timer>> sleepers_;
};

} // namespace tarnly::test
