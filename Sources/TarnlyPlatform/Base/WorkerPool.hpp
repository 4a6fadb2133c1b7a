#pragma once

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <concepts>
#include <cstddef>
#include <exception>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/StartThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// A few threads for work that would keep the network thread busy for a millisecond or more.
///
/// The threads sleep while there is no work. Destruction waits for work under way and drops work that waits.
class WorkerPool {
  public:
    /// Throws as `startThread`, and leaves no thread behind then.
    explicit WorkerPool(std::size_t threads = 2) : pool_(std::make_shared<Pool>(0)) {
        threads_.reserve(threads);
        try {
            while (threads_.size() < threads)
                threads_.push_back(startThread([pool = pool_] { pool->attach(); }));
        } catch (const std::exception&) {
            end();
            throw;
        }
    }

    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    ~WorkerPool() { end(); }

    /// Runs `work` on a worker thread and resumes the caller on its own executor with the result;
    /// what `work` throws is thrown to the caller. Pass a named callable, moved: see `Task`.
    template <std::invocable Work>
    Task<std::invoke_result_t<Work>> run(Work work) {
        // Told to end, the caller notices when the work is done: the two are not on one thread.
        const boost::asio::cancellation_slot deaf;
        co_return co_await boost::asio::co_spawn(
            *pool_, invoke(std::move(work)),
            boost::asio::bind_cancellation_slot(deaf, boost::asio::use_awaitable));
    }

    /// Runs `work`, which looks through a text of `size` bytes, where it disturbs nobody: a short text here
    /// and now, a long one on a worker thread.
    template <std::invocable Work>
    Task<std::invoke_result_t<Work>> runSized(std::size_t size, Work work) {
        if (size <= longText) co_return work();
        co_return co_await run(std::move(work));
    }

    /// Shares `value`, of about `size` bytes. A large one is destroyed on a worker thread, whoever lets it go
    /// last, as long as there is the pool.
    template <typename T>
    std::shared_ptr<const T> share(T value, std::size_t size) {
        if (size <= longText) return std::make_shared<const T>(std::move(value));
        auto destroy = [pool = std::weak_ptr<Pool>(pool_)](const T* shared) {
            auto owner = std::unique_ptr<const T>(shared);
            if (const auto alive = pool.lock()) {
                boost::asio::post(*alive, [owner = std::move(owner)] {});
            }
        };
        return {new T(std::move(value)), std::move(destroy)};
    }

    /// A longer text takes a millisecond or more.
    static constexpr std::size_t longText = 64 * 1024;

  private:
    using Pool = boost::asio::thread_pool;

    template <typename Work>
    static Task<std::invoke_result_t<Work>> invoke(Work work) {
        co_return work();
    }

    void end() {
        pool_->stop();
        for (auto& thread : threads_)
            thread.join();
    }

    /// Has no threads of its own: its constructor would wait for ever where the system starts too few.
    std::shared_ptr<Pool> pool_;
    std::vector<std::thread> threads_;
};

} // namespace tarnly
