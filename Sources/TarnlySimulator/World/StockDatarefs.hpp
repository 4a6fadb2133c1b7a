#pragma once

#include <cstddef>
#include <vector>

#include "TarnlySimulator/World/Dataref.hpp"

namespace tarnly::simulator {

/// Every dataref of the stand-in, without ids: those of the flight, a few hundred whose values are just kept,
/// and those of an add-on; filled up to `atLeast` entries with numbered ones.
std::vector<Dataref> stockDatarefs(std::size_t atLeast);

} // namespace tarnly::simulator
