#include "TarnlyPlatform/Base/TaskGroup.hpp"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <map>
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
    struct Entry {
        bool hasBegun = false;
        bool isCancelled = false;
    };

    explicit State(asio::any_io_executor givenExecutor)
        : executor(std::move(givenExecutor)), changed(executor) {}

    const asio::any_io_executor executor;
    std::map<Signal, Entry> running;
    Event changed;

    static Task<> run(std::shared_ptr<State> state, Signal signal, Task<> task);

    /// Whether it had been told to end.
    bool remove(const Signal& signal) {
        const auto entry = running.extract(signal);
        changed.notifyAll();
        return !entry.empty() && entry.mapped().isCancelled;
    }
};

Task<> TaskGroup::State::run(std::shared_ptr<State> state, Signal signal, Task<> task) {
    state->running.at(signal).hasBegun = true;
    std::exception_ptr failure;
    try {
        co_await std::move(task);
    } catch (...) {
        failure = std::current_exception();
    }
    // The library's own last step, too, would fail for a task that was told to end before it ever waited, and
    // nobody would hear of its end.
    co_await asio::this_coro::throw_if_cancelled(false);
    if (failure) std::rethrow_exception(failure);
}

TaskGroup::TaskGroup(asio::any_io_executor executor) : state_(std::make_shared<State>(std::move(executor))) {}

TaskGroup::~TaskGroup() { cancel(); }

void TaskGroup::spawn(Task<> task, OnFailure onFailure) {
    auto signal = std::make_shared<asio::cancellation_signal>();
    state_->running.try_emplace(signal);
    // The handler keeps the signal for as long as the task may look at it.
    auto whenEnded = [state = state_, signal,
                      onFailure = std::move(onFailure)](const std::exception_ptr& failure) {
        const bool wasCancelled = state->remove(signal);
        if (failure && !wasCancelled) onFailure(failure);
    };
    try {
        asio::co_spawn(state_->executor, State::run(state_, signal, std::move(task)),
                       asio::bind_cancellation_slot(signal->slot(), std::move(whenEnded)));
    } catch (...) {
        state_->remove(signal);
        throw;
    }
}

void TaskGroup::cancel() {
    // A task may come to its end, and so leave the table, while it is told.
    const auto running = state_->running;
    for (const auto& [signal, entry] : running) {
        const auto present = state_->running.find(signal);
        if (present == state_->running.end()) continue;
        present->second.isCancelled = true;
        auto tell = [signal = signal] { signal->emit(asio::cancellation_type::terminal); };
        // Outside the executor a signal would travel to the task by itself, and might not find its own
        // handler there any more; a task that waits for its beginning is told after that.
        if (entry.hasBegun) {
            asio::dispatch(state_->executor, std::move(tell));
        } else {
            asio::post(state_->executor, std::move(tell));
        }
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
