#pragma once

#include <chrono>

#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// Monotonic time and waiting, as an interface so that tests can turn the hands.
class Clock {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::steady_clock::duration;

    virtual ~Clock() = default;

    virtual TimePoint now() const = 0;

    /// Suspends the calling coroutine for at least `duration`.
    virtual Task<> sleepFor(Duration duration) = 0;
};

/// The computer's monotonic clock; waits on the executor of the calling coroutine.
class SystemClock final : public Clock {
  public:
    TimePoint now() const override;
    Task<> sleepFor(Duration duration) override;
};

} // namespace tarnly
