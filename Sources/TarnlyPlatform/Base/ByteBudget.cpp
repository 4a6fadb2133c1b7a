#include "TarnlyPlatform/Base/ByteBudget.hpp"

#include <deque>
#include <utility>

namespace tarnly {

struct ByteBudget::State {
    struct Taker {
        std::size_t bytes;
        Granted granted;
    };

    const std::size_t limit;
    std::size_t taken = 0;
    std::deque<Taker> takers;
    bool isGranting = false;
    OnOneThread thread;

    explicit State(std::size_t bytes) : limit(bytes) {}

    bool hasRoomFor(std::size_t bytes) const {
        return taken == 0 || (taken <= limit && bytes <= limit - taken);
    }
};

ByteBudget::Lease::Lease(std::shared_ptr<State> state, std::size_t bytes)
    : state_(std::move(state)), bytes_(bytes) {
    state_->taken += bytes_;
}

ByteBudget::Lease::Lease(Lease&& other) noexcept
    : state_(std::move(other.state_)), bytes_(std::exchange(other.bytes_, 0)) {}

ByteBudget::Lease& ByteBudget::Lease::operator=(Lease&& other) noexcept {
    if (this != &other) {
        release();
        state_ = std::move(other.state_);
        bytes_ = std::exchange(other.bytes_, 0);
    }
    return *this;
}

ByteBudget::Lease::~Lease() { release(); }

void ByteBudget::Lease::release() noexcept {
    const auto state = std::exchange(state_, nullptr);
    if (!state) return;
    state->thread.check();
    state->taken -= std::exchange(bytes_, 0);
    // A taker that lets go at once comes here again: the outermost call goes on for it.
    if (std::exchange(state->isGranting, true)) return;
    while (!state->takers.empty() && state->hasRoomFor(state->takers.front().bytes)) {
        auto taker = std::move(state->takers.front());
        state->takers.pop_front();
        taker.granted(Lease(state, taker.bytes));
    }
    state->isGranting = false;
}

ByteBudget::ByteBudget(std::size_t bytes) : state_(std::make_shared<State>(bytes)) {}

ByteBudget::~ByteBudget() {
    state_->isGranting = true; // what they hold may hold leases
    state_->takers.clear();
}

std::optional<ByteBudget::Lease> ByteBudget::tryTake(std::size_t bytes) {
    state_->thread.check();
    if (!state_->takers.empty() || !state_->hasRoomFor(bytes)) return std::nullopt;
    return Lease(state_, bytes);
}

void ByteBudget::take(std::size_t bytes, Granted granted) {
    if (auto lease = tryTake(bytes)) {
        granted(std::move(*lease));
    } else {
        state_->takers.push_back({bytes, std::move(granted)});
    }
}

std::size_t ByteBudget::taken() const {
    state_->thread.check();
    return state_->taken;
}

std::size_t ByteBudget::waiting() const {
    state_->thread.check();
    return state_->takers.size();
}

} // namespace tarnly
