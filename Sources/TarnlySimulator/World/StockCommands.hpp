#pragma once

#include <cstddef>
#include <vector>

#include "TarnlySimulator/World/Command.hpp"

namespace tarnly::simulator {

/// Every command of the stand-in, without ids, filled up to `atLeast` entries with numbered ones.
std::vector<Command> stockCommands(std::size_t atLeast);

} // namespace tarnly::simulator
