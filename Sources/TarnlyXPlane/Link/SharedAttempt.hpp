#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <exception>
#include <memory>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// One piece of work under way whose outcome any number of coroutines wait for. Belongs to the network
/// thread.
class SharedAttempt {
  public:
    explicit SharedAttempt(const boost::asio::any_io_executor& executor);

    /// Ends all waits, which throw `failure` unless it is null.
    void finish(std::exception_ptr failure);

    /// Returns when `attempt` has been finished. Keeps it alive, as whoever began to wait may be told to give
    /// up, and gone, before this notices.
    static Task<> wait(std::shared_ptr<SharedAttempt> attempt);

  private:
    OnOneThread thread_;
    Event finishedEvent_;
    bool finished_ = false;
    std::exception_ptr failure_;
};

} // namespace tarnly
