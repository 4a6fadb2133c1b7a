#pragma once

#include <chrono>
#include <cstdint>

namespace tarnly {

/// What a thread has used so far.
struct ThreadUse {
    /// On the processor.
    std::chrono::nanoseconds processor{};
    /// How often it has waited: for a lock, a disk, an event. Not how often another one was let run instead.
    std::int64_t waits = 0;
};

/// Of the calling thread.
ThreadUse threadUse();

} // namespace tarnly
