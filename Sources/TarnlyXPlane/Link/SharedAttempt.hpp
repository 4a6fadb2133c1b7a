#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <exception>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// One piece of work under way whose outcome any number of coroutines wait for. Belongs to the network
/// thread; who waits keeps it alive.
class SharedAttempt {
  public:
    explicit SharedAttempt(const boost::asio::any_io_executor& executor);

    /// Ends all waits, which throw `failure` unless it is null.
    void finish(std::exception_ptr failure);

    Task<> wait();

  private:
    OnOneThread thread_;
    Event finishedEvent_;
    bool finished_ = false;
    std::exception_ptr failure_;
};

} // namespace tarnly
