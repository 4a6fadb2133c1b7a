#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tarnly::simulator {

/// What the aircraft is doing, in the order in which one flight goes through it.
enum class FlightPhase { runway, climb, cruise, downwind, base, finalApproach, rollout };

inline constexpr std::array allFlightPhases{
    FlightPhase::runway, FlightPhase::climb,         FlightPhase::cruise, FlightPhase::downwind,
    FlightPhase::base,   FlightPhase::finalApproach, FlightPhase::rollout};

/// For example "final".
std::string_view name(FlightPhase phase);

std::optional<FlightPhase> flightPhaseNamed(std::string_view text);

/// The phase in which a saved situation begins: one that the file name mentions in any letter case ("Final
/// 09.sit"), else one that follows from the name's bytes, the same every time.
FlightPhase flightPhaseOfSituation(std::string_view fileName);

} // namespace tarnly::simulator
