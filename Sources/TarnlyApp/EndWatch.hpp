#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace tarnly {

/// Sees to it that the program ends, also where one of its threads waits for a disk that never answers.
///
/// The first thing that a `main` makes and the last that goes: what is still on its way when the time is up
/// ends with the process, without destructors, at exit status `status`. Safe from any thread.
class EndWatch {
  public:
    EndWatch() = default;
    EndWatch(const EndWatch&) = delete;
    EndWatch& operator=(const EndWatch&) = delete;
    /// All has ended by itself.
    ~EndWatch();

    /// Has the process ended after `limit`. A later call counts in place of the ones before.
    void expectEnd(std::chrono::milliseconds limit, int status) noexcept;

    /// What a disk that hangs may take from the moment at which the program is told to end: the time that a
    /// recording has, and a little more.
    static constexpr std::chrono::milliseconds longest{12'500};
    /// What taking down the rest may take, once all that is worth keeping is kept.
    static constexpr std::chrono::milliseconds takingDown{500};

  private:
    using SteadyClock = std::chrono::steady_clock;

    void watch();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<SteadyClock::time_point> deadline_;
    int status_ = 0;
    bool isOver_ = false;
    std::thread thread_;
};

} // namespace tarnly
