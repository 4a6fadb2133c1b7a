#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tarnly::simulator {

/// What a command does to a dataref when it is activated.
struct CommandEffect {
    enum class Kind { toggle, set, add, restartFlight };

    Kind kind;
    /// Its name; arrays change as a whole.
    const char* dataref;
    /// The number to set, or to add within 0 and 1.
    double operand;
};

/// One entry of the command list.
struct Command {
    std::string name;
    std::string description;
    /// None: the command is accepted and does nothing.
    const CommandEffect* effect = nullptr;
    std::int64_t id = 0;
};

/// Every command of the stand-in, without ids, filled up to `atLeast` entries with numbered ones.
std::vector<Command> stockCommands(std::size_t atLeast);

} // namespace tarnly::simulator
