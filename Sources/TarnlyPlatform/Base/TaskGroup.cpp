#include "TarnlyPlatform/Base/TaskGroup.hpp"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <cstdint>
#include <map>
#include <new>
#include <utility>

#include "TarnlyPlatform/Base/OnceMore.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;

using Signal = std::shared_ptr<asio::cancellation_signal>;

Task<> notifyAfter(Clock& clock, Clock::Duration time, Event& event) {
    co_await clock.sleepFor(time);
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    if (cancellation.cancelled() == asio::cancellation_type::none) event.notifyAll();
}

} // namespace

struct TaskGroup::State {
    struct Entry {
        bool isSpawned = false;
        bool hasBegun = false;
        bool isCancelled = false;
        /// The calls of `cancel` before it was spawned.
        std::uint64_t round;
    };
    class Ending;

    explicit State(asio::any_io_executor givenExecutor)
        : executor(std::move(givenExecutor)), changed(executor) {}

    const asio::any_io_executor executor;
    std::map<Signal, Entry> running;
    Event changed;
    /// How often all were told to end.
    std::uint64_t round = 0;

    static Task<> run(std::shared_ptr<State> state, Signal signal, Task<> task);
    static void spawn(const std::shared_ptr<State>& state, Task<> task, OnFailure onFailure);
    static void keepUp(const std::shared_ptr<State>& state, Make make);
    static void tell(const asio::any_io_executor& executor, const Signal& signal, bool hasBegun);

    /// Whether it had been told to end.
    bool remove(const Signal& signal) {
        const auto entry = running.extract(signal);
        changed.notifyAll();
        return !entry.empty() && entry.mapped().isCancelled;
    }
};

Task<> TaskGroup::State::run(std::shared_ptr<State> state, Signal signal, Task<> task) {
    state->running.at(signal).hasBegun = true;
    std::exception_ptr failure;
    try {
        co_await std::move(task);
    } catch (...) {
        failure = std::current_exception();
    }
    // The library's own last step, too, would fail for a task that was told to end before it ever waited, and
    // nobody would hear of its end.
    co_await asio::this_coro::throw_if_cancelled(false);
    if (failure) std::rethrow_exception(failure);
}

/// What is called when a task has ended. Destroyed without that, it tells that the task was lost.
class TaskGroup::State::Ending {
  public:
    /// Keeps the signal for as long as the task may look at it.
    Ending(std::shared_ptr<State> state, Signal signal, OnFailure onFailure)
        : state_(std::move(state)), signal_(std::move(signal)), onFailure_(std::move(onFailure)) {}

    Ending(Ending&&) = default;
    Ending& operator=(Ending&&) = delete;

    ~Ending() {
        if (!state_ || !isSpawned()) return;
        try {
            // Not while the task is being taken down.
            asio::post(state_->executor,
                       [state = state_, signal = signal_, onFailure = std::move(onFailure_)] {
                           end(*state, signal, onFailure, std::make_exception_ptr(std::bad_alloc()));
                       });
        } catch (const std::exception&) {
        }
    }

    void operator()(const std::exception_ptr& failure) {
        const auto state = std::exchange(state_, nullptr);
        end(*state, signal_, onFailure_, failure);
    }

  private:
    static void end(State& state, const Signal& signal, const OnFailure& onFailure,
                    const std::exception_ptr& failure) {
        const bool wasCancelled = state.remove(signal);
        if (failure && !wasCancelled) onFailure(failure);
    }

    bool isSpawned() const {
        const auto entry = state_->running.find(signal_);
        return entry != state_->running.end() && entry->second.isSpawned;
    }

    std::shared_ptr<State> state_;
    Signal signal_;
    OnFailure onFailure_;
};

void TaskGroup::State::spawn(const std::shared_ptr<State>& state, Task<> task, OnFailure onFailure) {
    auto signal = std::make_shared<asio::cancellation_signal>();
    state->running.try_emplace(signal, Entry{.round = state->round});
    Ending whenEnded(state, signal, std::move(onFailure));
    try {
        asio::co_spawn(state->executor, State::run(state, signal, std::move(task)),
                       asio::bind_cancellation_slot(signal->slot(), std::move(whenEnded)));
    } catch (...) {
        state->remove(signal);
        throw;
    }
    const auto entry = state->running.find(signal);
    if (entry != state->running.end()) entry->second.isSpawned = true;
}

void TaskGroup::State::keepUp(const std::shared_ptr<State>& state, Make make) {
    const auto begin = [&] {
        auto task = make();
        spawn(state, std::move(task), [state, make](const std::exception_ptr&) { keepUp(state, make); });
    };
    onceMoreWithoutMemory(begin);
}

TaskGroup::TaskGroup(asio::any_io_executor executor) : state_(std::make_shared<State>(std::move(executor))) {}

TaskGroup::~TaskGroup() { cancel(); }

void TaskGroup::spawn(Task<> task, OnFailure onFailure) {
    State::spawn(state_, std::move(task), std::move(onFailure));
}

void TaskGroup::keepUp(Make make) { State::keepUp(state_, std::move(make)); }

void TaskGroup::cancel() {
    const auto state = state_;
    const auto round = ++state->round;
    // Tasks may come to their end, and so leave the table, while one is told, and others be spawned.
    auto next = state->running.begin();
    while (next != state->running.end()) {
        const auto signal = next->first;
        auto& entry = next->second;
        if (entry.round < round) {
            entry.isCancelled = true;
            State::tell(state->executor, signal, entry.hasBegun);
        }
        next = state->running.upper_bound(signal);
    }
}

void TaskGroup::State::tell(const asio::any_io_executor& executor, const Signal& signal, bool hasBegun) {
    auto emit = [signal] { signal->emit(asio::cancellation_type::terminal); };
    try {
        // Outside the executor a signal would travel to the task by itself, and might not find its own
        // handler there any more; a task that waits for its beginning is told after that.
        if (hasBegun) {
            asio::dispatch(executor, std::move(emit));
        } else {
            asio::post(executor, std::move(emit));
        }
    } catch (const std::bad_alloc&) {
        // It goes on to an end of its own.
    }
}

std::size_t TaskGroup::size() const { return state_->running.size(); }

Task<bool> TaskGroup::join(Clock& clock, Clock::Duration limit) {
    const auto state = state_;
    const auto deadline = clock.now() + limit;
    while (!state->running.empty() && clock.now() < deadline) {
        const auto left = deadline - clock.now();
        co_await waitFor(state->changed, clock, left);
    }
    co_return state->running.empty();
}

Task<> waitFor(Event& event, Clock& clock, Clock::Duration limit) {
    auto executor = co_await asio::this_coro::executor;
    TaskGroup timer(executor);
    auto notifyNow = [&event](const std::exception_ptr&) { event.notifyAll(); };
    timer.spawn(notifyAfter(clock, limit, event), std::move(notifyNow));
    co_await event.wait();
}

} // namespace tarnly
