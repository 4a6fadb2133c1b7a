#include "TarnlyPlatform/Net/Admission.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"

namespace tarnly {

struct Admission::State {
    State(boost::asio::any_io_executor executor, Clock& givenClock, const Limits& givenLimits,
          std::function<void()> strangerGone)
        : clock(givenClock),
          limits(givenLimits),
          onStrangerGone(std::move(strangerGone)),
          changed(executor),
          tasks(std::move(executor)) {}

    OnOneThread thread;
    Clock& clock;
    const Limits limits;
    const std::function<void()> onStrangerGone;
    /// Who has come first stands first.
    std::vector<Visit*> visits;
    bool isWatching = false;
    Event changed;
    TaskGroup tasks;

    static bool isStranger(const Visit* visit) { return visit->isStranger_; }

    /// Those of one network, among whom this computer's own are nobody.
    static auto isFrom(const PeerNetwork& network) {
        return [network](const Visit* visit) { return !network.isLoopback() && visit->from_ == network; };
    }

    std::size_t count(const auto& isMeant) const {
        return static_cast<std::size_t>(std::ranges::count_if(visits, isMeant));
    }

    /// While more than `limit` are meant, sends their first strangers away, but not the newcomer.
    void makeRoom(const Visit* newcomer, std::size_t limit, const auto& isMeant) {
        const auto mayGo = [&](const Visit* visit) {
            return visit != newcomer && isStranger(visit) && isMeant(visit);
        };
        while (count(isMeant) > limit) {
            const auto first = std::ranges::find_if(visits, mayGo);
            if (first == visits.end()) return;
            dismiss(**first);
        }
    }

    void dismiss(Visit& visit) {
        remove(&visit);
        const auto sendAway = std::exchange(visit.sendAway_, {}); // the visit may end by it
        if (sendAway) sendAway();
    }

    void remove(const Visit* visit) { std::erase(visits, visit); }

    std::optional<Clock::TimePoint> firstEnd() const {
        std::optional<Clock::TimePoint> first;
        for (const auto* visit : visits) {
            const auto ends = isStranger(visit) ? visit->probationEnds_ : std::nullopt;
            if (ends) first = first ? std::min(*first, *ends) : *ends;
        }
        return first;
    }

    void dismissOverdue() {
        const auto isOverdue = [now = clock.now()](const Visit* visit) {
            return isStranger(visit) && visit->probationEnds_ && *visit->probationEnds_ <= now;
        };
        auto overdue = std::ranges::find_if(visits, isOverdue);
        while (overdue != visits.end()) {
            dismiss(**overdue);
            overdue = std::ranges::find_if(visits, isOverdue);
        }
    }

    /// One timer for all strangers, while there are some.
    static Task<> watch(std::shared_ptr<State> state) {
        auto end = state->firstEnd();
        while (end) {
            const auto left = *end - state->clock.now();
            if (left > Clock::Duration::zero()) {
                co_await waitFor(state->changed, state->clock, left);
            }
            state->dismissOverdue();
            end = state->firstEnd();
        }
        state->isWatching = false;
    }

    static void startWatching(const std::shared_ptr<State>& state) {
        if (std::exchange(state->isWatching, true)) return;
        // Without a timer, for lack of memory, the next stranger brings another one.
        try {
            state->tasks.spawn(watch(state), [state = std::weak_ptr(state)](const std::exception_ptr&) {
                if (const auto present = state.lock()) present->isWatching = false;
            });
        } catch (const std::exception&) {
            state->isWatching = false;
            throw;
        }
    }
};

Admission::Admission(boost::asio::any_io_executor executor, Clock& clock, const Limits& limits,
                     std::function<void()> onStrangerGone)
    : state_(std::make_shared<State>(std::move(executor), clock, limits, std::move(onStrangerGone))) {}

Admission::~Admission() { state_->tasks.cancel(); }

std::shared_ptr<Visit> Admission::admit(const PeerNetwork& from, std::function<void()> sendAway) {
    state_->thread.check();
    const auto& limits = state_->limits;
    std::shared_ptr<Visit> visit(new Visit(state_, from, std::move(sendAway)));
    state_->visits.push_back(visit.get());
    const auto isThence = State::isFrom(from);
    const auto isAnybody = [](const Visit*) { return true; };
    state_->makeRoom(visit.get(), limits.strangersANetwork,
                     [&](const Visit* other) { return State::isStranger(other) && isThence(other); });
    state_->makeRoom(visit.get(), limits.strangers, State::isStranger);
    state_->makeRoom(visit.get(), limits.peersANetwork, isThence);
    state_->makeRoom(visit.get(), limits.peers, isAnybody);
    State::startWatching(state_);
    return visit;
}

std::size_t Admission::peerCount() const {
    state_->thread.check();
    return state_->visits.size();
}

Visit::Visit(std::shared_ptr<Admission::State> state, const PeerNetwork& from, std::function<void()> sendAway)
    : state_(std::move(state)),
      from_(from),
      sendAway_(std::move(sendAway)),
      probationEnds_(state_->clock.now() + state_->limits.probation) {}

Visit::~Visit() {
    state_->remove(this);
    if (isStranger_ && state_->onStrangerGone) state_->onStrangerGone();
}

void Visit::trust() {
    state_->thread.check();
    isStranger_ = false;
}

void Visit::pauseProbation() {
    state_->thread.check();
    if (!probationEnds_) return;
    probationLeft_ = *probationEnds_ - state_->clock.now();
    probationEnds_.reset();
}

void Visit::resumeProbation() {
    state_->thread.check();
    if (probationEnds_) return;
    probationEnds_ = state_->clock.now() + probationLeft_;
    state_->changed.notifyAll(); // others may have more time left
    Admission::State::startWatching(state_);
}

bool Visit::hasRoom() const {
    state_->thread.check();
    const auto& limits = state_->limits;
    return state_->visits.size() <= limits.peers &&
           state_->count(Admission::State::isFrom(from_)) <= limits.peersANetwork;
}

} // namespace tarnly
