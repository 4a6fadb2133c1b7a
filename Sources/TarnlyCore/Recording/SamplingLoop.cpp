#include "TarnlyCore/Recording/SamplingLoop.hpp"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/this_coro.hpp>
#include <exception>
#include <utility>

namespace tarnly {

namespace asio = boost::asio;

SamplingLoop::SamplingLoop(asio::any_io_executor executor, Clock& clock,
                           PushSubscriptions onPushSubscriptions)
    : executor_(std::move(executor)), clock_(clock), onPushSubscriptions_(std::move(onPushSubscriptions)) {}

void SamplingLoop::start() {
    if (task_) return;
    task_ = std::make_shared<asio::cancellation_signal>();
    // The handler keeps the signal alive for as long as the task may look at it; a cancelled wait ends the
    // task.
    auto whenEnded = [signal = task_](const std::exception_ptr&) {};
    auto handler = asio::bind_cancellation_slot(task_->slot(), std::move(whenEnded));
    asio::co_spawn(executor_, run(weak_from_this(), clock_), std::move(handler));
}

void SamplingLoop::stop() {
    if (!task_) return;
    task_->emit(asio::cancellation_type::terminal);
    task_.reset();
}

Task<> SamplingLoop::run(std::weak_ptr<SamplingLoop> loop, Clock& clock) {
    for (;;) {
        const auto cancellation = co_await asio::this_coro::cancellation_state;
        if (cancellation.cancelled() != asio::cancellation_type::none) co_return;
        const auto alive = loop.lock();
        if (!alive) co_return;
        alive->tick();
        co_await clock.sleepFor(interval);
    }
}

void SamplingLoop::tick() {
    if (onPushSubscriptions_) onPushSubscriptions_();
}

} // namespace tarnly
