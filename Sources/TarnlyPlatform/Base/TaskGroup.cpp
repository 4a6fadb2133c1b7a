#include "TarnlyPlatform/Base/TaskGroup.hpp"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/this_coro.hpp>
#include <set>
#include <utility>

namespace tarnly {
namespace {

namespace asio = boost::asio;

using Signal = std::shared_ptr<asio::cancellation_signal>;

Task<> notifyAfter(Clock& clock, Clock::Duration time, Event& event) {
    co_await clock.sleepFor(time);
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    if (cancellation.cancelled() == asio::cancellation_type::none) event.notifyAll();
}

} // namespace

struct TaskGroup::State {
    explicit State(asio::any_io_executor givenExecutor)
        : executor(std::move(givenExecutor)), changed(executor) {}

    const asio::any_io_executor executor;
    /// One a task; those of tasks that were told to end among them.
    std::set<Signal> running;
    std::set<Signal> cancelled;
    Event changed;

    void remove(const Signal& signal) {
        running.erase(signal);
        cancelled.erase(signal);
        changed.notifyAll();
    }
};

TaskGroup::TaskGroup(asio::any_io_executor executor) : state_(std::make_shared<State>(std::move(executor))) {}

TaskGroup::~TaskGroup() { cancel(); }

void TaskGroup::spawn(Task<> task, OnFailure onFailure) {
    auto signal = std::make_shared<asio::cancellation_signal>();
    state_->running.insert(signal);
    // The handler keeps the signal for as long as the task may look at it.
    auto whenEnded = [state = state_, signal,
                      onFailure = std::move(onFailure)](const std::exception_ptr& failure) {
        const bool wasCancelled = state->cancelled.contains(signal);
        state->remove(signal);
        if (failure && !wasCancelled) onFailure(failure);
    };
    asio::co_spawn(state_->executor, std::move(task),
                   asio::bind_cancellation_slot(signal->slot(), std::move(whenEnded)));
}

void TaskGroup::cancel() {
    // A task may come to its end, and so leave the table, while it is told.
    const auto running = state_->running;
    for (const auto& signal : running) {
        if (!state_->running.contains(signal)) continue;
        state_->cancelled.insert(signal);
        // Outside the executor a signal would travel to the task by itself, and might not find its own
        // handler there any more.
        asio::dispatch(state_->executor, [signal] { signal->emit(asio::cancellation_type::terminal); });
    }
}

std::size_t TaskGroup::size() const { return state_->running.size(); }

Task<bool> TaskGroup::join(Clock& clock, Clock::Duration limit) {
    const auto state = state_;
    const auto deadline = clock.now() + limit;
    while (!state->running.empty() && clock.now() < deadline) {
        const auto left = deadline - clock.now();
        co_await waitFor(state->changed, clock, left);
    }
    co_return state->running.empty();
}

Task<> waitFor(Event& event, Clock& clock, Clock::Duration limit) {
    auto executor = co_await asio::this_coro::executor;
    TaskGroup timer(executor);
    auto notifyNow = [&event](const std::exception_ptr&) { event.notifyAll(); };
    timer.spawn(notifyAfter(clock, limit, event), std::move(notifyNow));
    co_await event.wait();
}

} // namespace tarnly
