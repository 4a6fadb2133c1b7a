#include "TarnlyPlatform/Base/TaskGroup.hpp"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/dispatch.hpp>
#include <set>
#include <utility>

#include "TarnlyPlatform/Base/Event.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;

using Signal = std::shared_ptr<asio::cancellation_signal>;

Task<> raiseAfter(Clock& clock, Clock::Duration limit, std::shared_ptr<bool> isOver,
                  std::shared_ptr<Event> changed) {
    co_await clock.sleepFor(limit);
    *isOver = true;
    changed->notifyAll();
}

} // namespace

struct TaskGroup::State {
    explicit State(asio::any_io_executor givenExecutor)
        : executor(std::move(givenExecutor)), changed(std::make_shared<Event>(executor)) {}

    const asio::any_io_executor executor;
    /// One a task; those of tasks that were told to end among them.
    std::set<Signal> running;
    std::set<Signal> cancelled;
    const std::shared_ptr<Event> changed;

    void remove(const Signal& signal) {
        running.erase(signal);
        cancelled.erase(signal);
        changed->notifyAll();
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
    const auto isOver = std::make_shared<bool>(false);
    TaskGroup timer(state->executor);
    auto raising = raiseAfter(clock, limit, isOver, state->changed);
    timer.spawn(std::move(raising), dropFailure);
    while (!state->running.empty() && !*isOver) {
        co_await state->changed->wait();
    }
    co_return state->running.empty();
}

} // namespace tarnly
