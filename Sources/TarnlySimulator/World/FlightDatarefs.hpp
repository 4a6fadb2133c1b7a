#pragma once

#include <span>

#include "TarnlySimulator/World/Dataref.hpp"

namespace tarnly::simulator {

/// The datarefs behind which stands the flight.
std::span<const FlightBinding> flightDatarefs();

} // namespace tarnly::simulator
