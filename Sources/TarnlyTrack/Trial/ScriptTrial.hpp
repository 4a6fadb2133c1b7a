#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Script/Trigger.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyTrack/Log/FlightLog.hpp"

/// A script over a flight that has been flown: what would have fired, and how near the rest came. Plain
/// values and functions of them, callable from any thread.
namespace tarnly::track {

/// A trigger that did not fire.
struct Miss {
    std::string triggerId;
    std::string title;
    /// Why, and how near it came, in one clause without a full stop: "never below 540 ft AGL (at 12:04), and
    /// waits for 500 ft on the way down".
    std::string words;
    /// The nearest moment; absent where there is none.
    std::optional<std::size_t> sample;
};

struct Trial {
    /// In the order of firing.
    std::vector<tarnly::FiredTrigger> fired;
    /// On which sample, one for each of `fired`.
    std::vector<std::size_t> firedOn;
    /// In the order of the script.
    std::vector<Miss> missed;
};

/// Flies `log` with the companion's own engine, as if the script had been loaded before the recording was
/// started. `fixPosition` is the one that the engine was made with.
///
/// A log does not tell where the simulator was restarted. Where the aircraft stands behind a gap farther away
/// than anything flies meanwhile, it was taken elsewhere, and the engine is told so.
Trial tryScript(TriggerEngine engine, const FlightLog& log, const FixResolver& fixPosition);

} // namespace tarnly::track
