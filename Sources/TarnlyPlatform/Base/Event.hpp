#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// Wakes the coroutines of one thread that wait for a condition. A waiter checks its condition again in a
/// loop.
class Event {
  public:
    explicit Event(const boost::asio::any_io_executor& executor)
        : timer_(executor, boost::asio::steady_timer::time_point::max()) {}

    void notifyAll() { timer_.cancel(); }

    Task<> wait() { co_await timer_.async_wait(asTuple); }

  private:
    boost::asio::steady_timer timer_;
};

} // namespace tarnly
