#include "TarnlyPlatform/Base/FreedMemory.hpp"

#include <cstdint>
#include <utility>

namespace tarnly {

namespace {

/// Somebody comes and goes all the time: that must not keep what others have left.
constexpr int mostRounds = 2;

} // namespace

struct FreedMemory::State {
    WorkerPool& workers;
    Clock& clock;
    const std::function<void()> giveBack;
    std::uint64_t notes = 0;
    bool isWaiting = false;
};

FreedMemory::FreedMemory(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
                         std::function<void()> giveBack)
    : state_(std::make_shared<State>(State{workers, clock, std::move(giveBack)})),
      tasks_(std::move(executor)) {}

void FreedMemory::note() {
    thread_.check();
    ++state_->notes;
    if (std::exchange(state_->isWaiting, true)) return;
    try {
        auto again = [state = state_](const std::exception_ptr&) { state->isWaiting = false; };
        tasks_.spawn(giveBackWhenQuiet(state_), std::move(again));
    } catch (const std::exception&) {
        state_->isWaiting = false; // the next one may find memory for it
    }
}

Task<> FreedMemory::giveBackWhenQuiet(std::shared_ptr<State> state) {
    std::uint64_t done = 0;
    while (done != state->notes) {
        std::uint64_t seen = 0;
        for (int rounds = 0; seen != state->notes && rounds < mostRounds; ++rounds) {
            seen = state->notes;
            co_await state->clock.sleepFor(quiet);
        }
        auto work = state->giveBack;
        co_await state->workers.run(std::move(work));
        done = seen;
    }
    state->isWaiting = false;
}

} // namespace tarnly
