#pragma once

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <chrono>
#include <exception>
#include <functional>
#include <optional>
#include <stdexcept>
#include <type_traits>

#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly::test {

/// Runs `task` to its end on `io`, together with whatever else runs there, in real time; returns its result
/// or throws what it threw. Throws when it has not ended after `patience`.
template <typename T>
T runTask(boost::asio::io_context& io, Task<T> task,
          std::chrono::seconds patience = std::chrono::seconds(60)) {
    std::exception_ptr error;
    bool done = false;
    std::conditional_t<std::is_void_v<T>, std::optional<int>, std::optional<T>> result;
    if constexpr (std::is_void_v<T>) {
        boost::asio::co_spawn(io, std::move(task), [&](std::exception_ptr failure) {
            error = failure;
            done = true;
        });
    } else {
        boost::asio::co_spawn(io, std::move(task), [&](std::exception_ptr failure, T value) {
            error = failure;
            if (!failure) result.emplace(std::move(value));
            done = true;
        });
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    io.restart();
    while (!done && io.run_one_until(deadline) > 0) {
    }
    if (!done) throw std::runtime_error("the task has not ended in time");
    if (error) std::rethrow_exception(error);
    if constexpr (!std::is_void_v<T>) return std::move(*result);
}

/// Lets `io` work, in real time, until `condition` holds; says whether it came to that within `patience`.
inline bool runUntil(boost::asio::io_context& io, const std::function<bool()>& condition,
                     std::chrono::seconds patience = std::chrono::seconds(60)) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
        io.restart();
        io.run_for(std::chrono::milliseconds(1));
    }
    return condition();
}

} // namespace tarnly::test
