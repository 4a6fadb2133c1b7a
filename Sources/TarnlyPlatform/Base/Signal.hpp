#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/post.hpp>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// Wakes a coroutine when another thread says so, once.
///
/// Lives in the frame of the coroutine, on one thread. Its end is the end of the waiting: what raises it
/// later, for which it need not be there any more, nor the executor, does nothing.
class Signal {
  public:
    explicit Signal(const boost::asio::any_io_executor& executor)
        : state_(std::make_shared<State>(executor)) {}

    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    ~Signal() {
        const std::lock_guard lock(state_->mutex);
        state_->executor.reset();
        state_->event.reset();
    }

    /// What raises it: for any thread to call, at any time.
    std::function<void()> raiser() const {
        return [state = state_] { raise(state); };
    }

    /// Returns at once when it has been raised before.
    Task<> wait() {
        while (!state_->isRaised())
            co_await state_->event->wait();
    }

  private:
    struct State {
        explicit State(const boost::asio::any_io_executor& itsExecutor)
            : executor(itsExecutor), event(std::make_unique<Event>(itsExecutor)) {}

        bool isRaised() {
            const std::lock_guard lock(mutex);
            return raised;
        }

        std::mutex mutex;
        bool raised = false;
        /// Absent when nobody waits any more.
        std::optional<boost::asio::any_io_executor> executor;
        /// For the executor's thread only, and absent as well then.
        std::unique_ptr<Event> event;
    };

    static void raise(const std::shared_ptr<State>& state) {
        const std::lock_guard lock(state->mutex);
        state->raised = true;
        if (!state->executor) return;
        boost::asio::post(*state->executor, [state] {
            if (state->event) state->event->notifyAll();
        });
    }

    const std::shared_ptr<State> state_;
};

} // namespace tarnly
