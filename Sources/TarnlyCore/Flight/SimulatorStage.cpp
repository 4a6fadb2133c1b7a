#include "TarnlyCore/Flight/SimulatorStage.hpp"

#include <algorithm>
#include <array>
#include <chrono>

namespace tarnly {
namespace {

using Kind = SimulatorStage::Kind;

struct Wording {
    std::string_view name;
    std::string_view words;
    std::string_view advice;
};

/// In the order of `Kind`.
constexpr std::array<Wording, 6> wordings{{
    {"not_running", "Simulator: not running", "start X-Plane 12.1.4 or later"},
    {"refusing", "Simulator: refuses connections",
     "allow incoming traffic in the simulator's network settings"},
    {"too_old", "Simulator: too old", "X-Plane 12.1.4 or later is needed"},
    {"main_menu", "Simulator: at the main menu", "load a flight"},
    {"flight_loaded", "Simulator: flight loaded", ""},
    {"silent", "Simulator: silent", "look at the simulator, and restart it if it does not react"},
}};

const Wording& wordingOf(Kind kind) { return wordings.at(static_cast<std::size_t>(kind)); }

} // namespace

std::string_view stageName(Kind kind) { return wordingOf(kind).name; }

std::string stageWords(const SimulatorStage& stage, Clock::TimePoint now) {
    std::string words(wordingOf(stage.kind).words);
    if (stage.silentSince) {
        const auto silent = std::max(now - *stage.silentSince, Clock::Duration::zero());
        const auto seconds = std::chrono::floor<std::chrono::seconds>(silent);
        words += " for " + std::to_string(seconds.count()) + " s";
    }
    if (!stage.detail.empty()) words += " (" + stage.detail + ")";
    return words;
}

std::string stageAdvice(const SimulatorStage& stage) { return std::string(wordingOf(stage.kind).advice); }

} // namespace tarnly
