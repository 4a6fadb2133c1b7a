#include "TarnlyCore/Script/LoadedScript.hpp"

#include <utility>

namespace tarnly {

void LoadedScript::set(TriggerEngine engine) {
    // Destroyed at the end, without the lock: a long script would hold up the heartbeat.
    std::optional<TriggerEngine> replaced(std::move(engine));
    engine_.with([&](auto& current) { current.swap(replaced); });
}

std::vector<FiredTrigger> LoadedScript::evaluate(const TriggerSample& sample) {
    return engine_.with(
        [&](auto& engine) { return engine ? engine->evaluate(sample) : std::vector<FiredTrigger>(); });
}

} // namespace tarnly
