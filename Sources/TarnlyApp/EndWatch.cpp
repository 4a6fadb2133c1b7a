#include "TarnlyApp/EndWatch.hpp"

#include <cstdlib>
#include <exception>

namespace tarnly {

EndWatch::~EndWatch() {
    {
        const std::lock_guard lock(mutex_);
        isOver_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
}

void EndWatch::expectEnd(std::chrono::milliseconds limit, int status) noexcept {
    const std::lock_guard lock(mutex_);
    deadline_ = SteadyClock::now() + limit;
    status_ = status;
    changed_.notify_all();
    if (thread_.joinable()) return;
    try {
        thread_ = std::thread([this] { watch(); });
    } catch (const std::exception&) {
        // The system starts no more threads: the end takes what it takes.
    }
}

void EndWatch::watch() {
    std::unique_lock lock(mutex_);
    while (!isOver_ && SteadyClock::now() < *deadline_)
        changed_.wait_until(lock, *deadline_);
    if (!isOver_) std::_Exit(status_);
}

} // namespace tarnly
