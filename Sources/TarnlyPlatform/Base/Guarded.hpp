#pragma once

#include <mutex>
#include <utility>

namespace tarnly {

/// A value that can be reached only while its mutex is held.
///
/// Hold it for single reads, writes and swaps: never across a `co_await`, never two at once.
template <typename T>
class Guarded {
  public:
    template <typename... Args>
    explicit Guarded(Args&&... args) : value_{std::forward<Args>(args)...} {}

    /// Calls `use` with the value while the mutex is held, and returns a copy of its result.
    template <typename Use>
    auto with(Use&& use) {
        const std::lock_guard lock(mutex_);
        return std::forward<Use>(use)(value_);
    }

    template <typename Use>
    auto with(Use&& use) const {
        const std::lock_guard lock(mutex_);
        return std::forward<Use>(use)(value_);
    }

    T copy() const {
        const std::lock_guard lock(mutex_);
        return value_;
    }

  private:
    mutable std::mutex mutex_;
    T value_;
};

} // namespace tarnly
