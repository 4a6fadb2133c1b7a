#pragma once

#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace tarnly {

/// A thread that runs `body`. Throws `std::runtime_error`, with what helps, where the system starts no more.
template <typename Body>
std::thread startThread(Body body) {
    try {
        return std::thread(std::move(body));
    } catch (const std::system_error& error) {
        throw std::runtime_error("the system starts no more threads (" + error.code().message() +
                                 "); end some programs, or raise the limit of processes (ulimit -u)");
    }
}

} // namespace tarnly
