#include "TarnlyCore/Flight/SimulatorStage.hpp"

#include <algorithm>
#include <array>
#include <chrono>

namespace tarnly {
namespace {

using Kind = SimulatorStage::Kind;

/// In the order of `Kind`.
constexpr std::array<std::string_view, 6> stageNames{"not_running", "refusing",      "too_old",
                                                     "main_menu",   "flight_loaded", "silent"};

Phrase silentWords(const SimulatorStage& stage, Clock::TimePoint now) {
    if (!stage.silentSince) return Phrase::of("Simulator: silent");
    const auto silent = std::max(now - *stage.silentSince, Clock::Duration::zero());
    return Phrase::of("Simulator: silent for %1 s", std::chrono::floor<std::chrono::seconds>(silent).count());
}

Phrase wordsOf(const SimulatorStage& stage, Clock::TimePoint now) {
    switch (stage.kind) {
        case Kind::notRunning:
            return Phrase::of("Simulator: not running");
        case Kind::refusing:
            return Phrase::of("Simulator: refuses connections");
        case Kind::tooOld:
            return Phrase::of("Simulator: too old");
        case Kind::mainMenu:
            return Phrase::of("Simulator: at the main menu");
        case Kind::flightLoaded:
            return Phrase::of("Simulator: flight loaded");
        case Kind::silent:
            break;
    }
    return silentWords(stage, now);
}

} // namespace

std::string_view stageName(Kind kind) { return stageNames.at(static_cast<std::size_t>(kind)); }

Phrase stageWords(const SimulatorStage& stage, Clock::TimePoint now) {
    auto words = wordsOf(stage, now);
    return stage.detail.empty() ? words : Phrase::of("%1 (%2)", words, stage.detail);
}

Phrase stageAdvice(const SimulatorStage& stage) {
    switch (stage.kind) {
        case Kind::notRunning:
            return Phrase::of("start X-Plane 12.1.4 or later");
        case Kind::refusing:
            return Phrase::of("allow incoming traffic in the simulator's network settings");
        case Kind::tooOld:
            return Phrase::of("X-Plane 12.1.4 or later is needed");
        case Kind::mainMenu:
            return Phrase::of("load a flight");
        case Kind::silent:
            return Phrase::of("look at the simulator, and restart it if it does not react");
        case Kind::flightLoaded:
            break;
    }
    return {};
}

} // namespace tarnly
