#pragma once

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// A few threads for work that would keep the network thread busy for a millisecond or more.
///
/// The threads sleep while there is no work. Destruction waits for work under way and drops work that waits.
class WorkerPool {
  public:
    explicit WorkerPool(std::size_t threads = 2) : pool_(threads) {}

    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    ~WorkerPool() {
        pool_.stop();
        pool_.join();
    }

    /// Runs `work` on a worker thread and resumes the caller on its own executor with the result;
    /// what `work` throws is thrown to the caller. Pass a named callable, moved: see `Task`.
    template <std::invocable Work>
    Task<std::invoke_result_t<Work>> run(Work work) {
        // Told to end, the caller notices when the work is done: the two are not on one thread.
        const boost::asio::cancellation_slot deaf;
        co_return co_await boost::asio::co_spawn(
            pool_, invoke(std::move(work)),
            boost::asio::bind_cancellation_slot(deaf, boost::asio::use_awaitable));
    }

    /// Runs `work`, which looks through a text of `size` bytes, where it disturbs nobody: a short text here
    /// and now, a long one on a worker thread.
    template <std::invocable Work>
    Task<std::invoke_result_t<Work>> runSized(std::size_t size, Work work) {
        if (size <= longText) co_return work();
        co_return co_await run(std::move(work));
    }

    /// A longer text takes a millisecond or more.
    static constexpr std::size_t longText = 64 * 1024;

  private:
    template <typename Work>
    static Task<std::invoke_result_t<Work>> invoke(Work work) {
        co_return work();
    }

    boost::asio::thread_pool pool_;
};

} // namespace tarnly
