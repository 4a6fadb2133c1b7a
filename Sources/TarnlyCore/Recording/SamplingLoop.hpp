#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <chrono>
#include <functional>
#include <memory>

#include "TarnlyPlatform/Clock.hpp"
#include "TarnlyPlatform/Task.hpp"

namespace tarnly {

/// The core's heartbeat: twice a second it has the subscribed dataref values pushed.
///
/// Started and stopped by the host. Belongs to the network thread; its task holds the loop weakly.
class SamplingLoop : public std::enable_shared_from_this<SamplingLoop> {
  public:
    static constexpr std::chrono::nanoseconds interval{500'000'000};

    using PushSubscriptions = std::function<void()>;

    /// `clock` must outlive all that runs on `executor`.
    SamplingLoop(boost::asio::any_io_executor executor, Clock& clock, PushSubscriptions onPushSubscriptions);

    /// Does nothing when the loop runs already.
    void start();

    /// Does not wait for a tick under way. Harmless when the loop does not run.
    void stop();

  private:
    static Task<> run(std::weak_ptr<SamplingLoop> loop, Clock& clock);
    void tick();

    const boost::asio::any_io_executor executor_;
    Clock& clock_;
    const PushSubscriptions onPushSubscriptions_;
    /// Present while the loop runs.
    std::shared_ptr<boost::asio::cancellation_signal> task_;
};

} // namespace tarnly
