#pragma once

#include <optional>
#include <string_view>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// How the simulator stands, as far as the companion can tell. A plain value.
struct SimulatorStage {
    enum class Kind {
        notRunning,   ///< nothing answers where it is looked for
        refusing,     ///< it answers, and lets nobody in
        tooOld,       ///< it has no web API that serves
        mainMenu,     ///< it runs, and no flight is loaded
        flightLoaded, ///< all is well
        silent,       ///< it was there, and says nothing any more
    };

    Kind kind = Kind::notRunning;
    /// `refusing`: the simulator's own message. `tooOld`: its version. Empty where it is not known.
    Phrase detail;
    /// `silent`: when the last byte came.
    std::optional<Clock::TimePoint> silentSince;

    bool operator==(const SimulatorStage&) const = default;
};

/// The stage's name in JSON: "not_running", "refusing", "too_old", "main_menu", "flight_loaded", "silent".
std::string_view stageName(SimulatorStage::Kind kind);

/// The stage in people's words, without a full stop: "Simulator: silent for 7 s". `now` is of the clock of
/// `silentSince`.
Phrase stageWords(const SimulatorStage& stage, Clock::TimePoint now);

/// What to do about it, as a clause: "start X-Plane 12.1.4 or later". Empty while there is nothing to do.
Phrase stageAdvice(const SimulatorStage& stage);

} // namespace tarnly
