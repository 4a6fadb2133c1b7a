#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <functional>
#include <memory>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"

namespace tarnly {

/// Gives the memory that the process has freed back to the system: the allocator keeps it for the next one
/// who asks. May take some milliseconds. From any thread.
void giveBackFreedMemory();

/// Lets the allocator keep no more than a few megabytes of freed memory by itself. Left alone it keeps twice
/// the largest block that it has ever seen freed, for each thread, and `giveBackFreedMemory` cannot have all
/// of that. For the beginning of `main`, before there are other threads.
void keepLittleFreedMemory();

/// Sees to it that the memory of what was large does not stay with the process for ever.
///
/// Belongs to the thread of its executor, like the tasks there. `workers` and `clock` outlive what runs
/// there.
class FreedMemory {
  public:
    /// `giveBack` is called on a worker.
    FreedMemory(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
                std::function<void()> giveBack = giveBackFreedMemory);

    /// Something large has been let go, or is about to be. When no more of that has come for `quiet`, or
    /// after twice that time, the memory is given back, once for all of it. Never fails.
    void note();

    static constexpr std::chrono::seconds quiet{3};

  private:
    struct State;

    static Task<> giveBackWhenQuiet(std::shared_ptr<State> state);

    OnOneThread thread_;
    const std::shared_ptr<State> state_;
    TaskGroup tasks_;
};

} // namespace tarnly
