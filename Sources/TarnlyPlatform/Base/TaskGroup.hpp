#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// The coroutines of one owner: none is left to itself. They start at once, are told to end together, and can
/// be waited for.
///
/// A member of its owner. What a task needs it keeps alive itself: tasks that have been told to end go on
/// until they notice, which a group that is destroyed does not wait for. Used on the thread of its executor,
/// or while that does not run.
class TaskGroup {
  public:
    /// What becomes of the owner when an exception leaves a task, or when the task was lost: for lack of
    /// memory the libraries drop what it waits for, and the task with it, which is `std::bad_alloc` here. Not
    /// called for tasks that were told to end.
    using OnFailure = std::function<void(const std::exception_ptr& failure)>;
    using Make = std::function<Task<>()>;

    explicit TaskGroup(boost::asio::any_io_executor executor);

    TaskGroup(const TaskGroup&) = delete;
    TaskGroup& operator=(const TaskGroup&) = delete;

    /// Cancels.
    ~TaskGroup();

    /// Starts `task`, which may do all its work before this returns; that it has ended is noticed afterwards.
    void spawn(Task<> task, OnFailure onFailure);

    /// Starts the task that `make` makes, and another one whenever it fails or is lost, until all are told to
    /// end. For tasks that no exception leaves, as the next one begins at once.
    void keepUp(Make make);

    /// Tells all tasks to end: what they wait for, and what they are going to wait for, fails with
    /// `operation_aborted`. Tasks that are spawned later are not concerned. Harmless when repeated.
    void cancel();

    std::size_t size() const;

    /// Waits until no task is left, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock& clock, Clock::Duration limit);

  private:
    struct State;
    std::shared_ptr<State> state_;
};

/// Waits for `event`, which outlives the waiting, for `limit` at most.
Task<> waitFor(Event& event, Clock& clock, Clock::Duration limit);

/// For tasks whose failure concerns nobody: what they were to do is not done.
inline void dropFailure(const std::exception_ptr&) {}

} // namespace tarnly
