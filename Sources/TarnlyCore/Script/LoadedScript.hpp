#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

namespace tarnly {

/// Holds the trigger engine in force, if any. One a host, shared by all sessions and the sampling loop;
/// callable from any thread.
class LoadedScript {
  public:
    /// A copy of the engine as it stands.
    std::optional<TriggerEngine> current() const { return engine_.copy(); }

    /// Puts `engine` in force. The engine before it, with all that it had fired, is gone.
    void set(TriggerEngine engine) {
        // Destroyed at the end, without the lock: a long script would hold up the heartbeat.
        std::optional<TriggerEngine> replaced(std::move(engine));
        engine_.with([&](auto& current) { current.swap(replaced); });
    }

    /// The triggers of the engine in force that fire on this sample, in the order of firing.
    std::vector<FiredTrigger> evaluate(const TriggerSample& sample) {
        return engine_.with(
            [&](auto& engine) { return engine ? engine->evaluate(sample) : std::vector<FiredTrigger>(); });
    }

  private:
    Guarded<std::optional<TriggerEngine>> engine_;
};

} // namespace tarnly
