#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

namespace tarnly {

/// Holds the trigger engine in force, if any. One a host, shared by all sessions and the sampling loop;
/// callable from any thread.
class LoadedScript {
  public:
    /// A script's place among those that are to come into force: of two the later one does, whichever is
    /// ready first.
    using Place = std::uint64_t;

    /// The next place, behind all that were given out before.
    Place announce() {
        return state_.with([](State& state) { return ++state.announced; });
    }

    /// A copy of the engine as it stands.
    std::optional<TriggerEngine> current() const {
        return state_.with([](const State& state) { return state.engine; });
    }

    /// Puts `engine` in force, unless one of a later place is. The engine before it, with all that it had
    /// fired, is gone.
    void set(TriggerEngine engine, Place place) {
        // Destroyed at the end, without the lock: a long script would hold up the heartbeat.
        std::optional<TriggerEngine> exchanged(std::move(engine));
        state_.with([&](State& state) {
            if (place < state.inForce) return;
            state.inForce = place;
            state.engine.swap(exchanged);
        });
    }

    void set(TriggerEngine engine) { set(std::move(engine), announce()); }

    /// The triggers of the engine in force that fire on this sample, in the order of firing.
    FiredTriggers evaluate(const TriggerSample& sample) {
        return state_.with(
            [&](State& state) { return state.engine ? state.engine->evaluate(sample) : FiredTriggers(); });
    }

  private:
    struct State {
        std::optional<TriggerEngine> engine;
        Place announced = 0;
        /// Of `engine`.
        Place inForce = 0;
    };

    Guarded<State> state_;
};

} // namespace tarnly
