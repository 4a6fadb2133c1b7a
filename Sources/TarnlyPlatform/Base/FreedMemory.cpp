#include "TarnlyPlatform/Base/FreedMemory.hpp"

#include <cstdint>
#include <utility>

namespace tarnly {

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
    if (!std::exchange(state_->isWaiting, true)) tasks_.spawn(giveBackWhenQuiet(state_), dropFailure);
}

Task<> FreedMemory::giveBackWhenQuiet(std::shared_ptr<State> state) {
    std::uint64_t done = 0;
    while (done != state->notes) {
        std::uint64_t seen = 0;
        while (seen != state->notes) {
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
