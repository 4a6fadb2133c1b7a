#pragma once

#include <boost/asio/this_coro.hpp>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"

namespace tarnly {

/// What `withinLimit` answers: the task's result, or for a task without one whether it has ended.
template <typename T>
using WithinLimitResult = std::conditional_t<std::is_void_v<T>, bool, std::optional<T>>;

namespace detail {

template <typename T>
struct LimitedTask {
    explicit LimitedTask(const boost::asio::any_io_executor& executor) : changed(executor) {}

    Event changed;
    bool isDone = false;
    std::exception_ptr failure;
    WithinLimitResult<T> result{};
};

template <typename T>
Task<> runLimited(std::shared_ptr<LimitedTask<T>> state, Task<T> task) {
    try {
        if constexpr (std::is_void_v<T>) {
            co_await std::move(task);
            state->result = true;
        } else {
            state->result = co_await std::move(task);
        }
    } catch (...) {
        state->failure = std::current_exception();
    }
    state->isDone = true;
    state->changed.notifyAll();
}

} // namespace detail

/// Waits for `task` for `limit` at most. A task that takes longer is told to end, and what becomes of it is
/// dropped; the answer is then absent, or false. Throws what the task throws in time. The task is told to end
/// also when who waits is; it goes on until it notices, so what it needs it keeps alive itself.
template <typename T>
Task<WithinLimitResult<T>> withinLimit(Clock& clock, Clock::Duration limit, Task<T> task) {
    auto executor = co_await boost::asio::this_coro::executor;
    const auto state = std::make_shared<detail::LimitedTask<T>>(executor);
    const auto deadline = clock.now() + limit;
    TaskGroup group(executor);
    auto endWait = [state](const std::exception_ptr& failure) {
        state->failure = failure;
        state->isDone = true;
        state->changed.notifyAll();
    };
    group.spawn(detail::runLimited(state, std::move(task)), std::move(endWait));
    while (!state->isDone && clock.now() < deadline) {
        const auto left = deadline - clock.now();
        co_await waitFor(state->changed, clock, left);
    }
    if (state->failure) std::rethrow_exception(state->failure);
    co_return std::move(state->result);
}

} // namespace tarnly
