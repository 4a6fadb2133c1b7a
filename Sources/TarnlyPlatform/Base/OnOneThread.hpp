#pragma once

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace tarnly {

/// Holds a class to its word that it belongs to one thread. A member of that class, asked at its entries:
///
///     void Door::open() {
///         thread_.check();
///
/// The thread that asks first is the one; an object may be built on another. Ends the process in debug builds
/// when another thread asks, and costs nothing in others.
class OnOneThread {
  public:
#ifdef NDEBUG
    void check() const {}
#else
    OnOneThread() = default;
    /// A copy belongs to whoever asks it first.
    OnOneThread(const OnOneThread&) {}
    OnOneThread& operator=(const OnOneThread&) { return *this; }

    void check() const {
        std::thread::id owner;
        const auto present = std::this_thread::get_id();
        if (owner_.compare_exchange_strong(owner, present) || owner == present) return;
        std::fputs("an object that belongs to one thread is used by another\n", stderr);
        std::abort();
    }

  private:
    mutable std::atomic<std::thread::id> owner_{};
#endif
};

} // namespace tarnly
