#pragma once

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <chrono>
#include <exception>
#include <memory>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"

namespace tarnly {

/// Accepts one connection and has it served; says whether it came to that.
template <typename State>
Task<bool> acceptOne(std::shared_ptr<State> state) {
    state->thread.check();
    auto [error, socket] = co_await state->acceptor.async_accept(asTuple);
    if (error || state->isCancelled) co_return false;
    auto serving = State::serveOne(state, std::move(socket));
    state->tasks.spawn(std::move(serving), dropFailure); // it costs this peer its connection
    co_return true;
}

/// Accepts connections until `state->isCancelled`, whatever goes wrong with one of them. A `State` has the
/// members `thread`, `clock`, `acceptor`, `tasks` and `isCancelled`, and a static coroutine
/// `serveOne(state, socket)`, which becomes one of its tasks.
template <typename State>
Task<> acceptAll(std::shared_ptr<State> state) {
    constexpr std::chrono::milliseconds pause(100);
    while (!state->isCancelled) {
        bool isAccepted = false;
        try {
            isAccepted = co_await acceptOne(state);
        } catch (const std::exception&) {
        }
        if (isAccepted || state->isCancelled) continue;
        // Out of descriptors or memory, the waiting peer would wake us again at once.
        co_await state->clock.sleepFor(pause);
    }
}

} // namespace tarnly
