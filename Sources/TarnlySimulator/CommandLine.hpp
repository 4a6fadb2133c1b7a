#pragma once

#include <string>
#include <variant>
#include <vector>

#include "TarnlySimulator/Simulator.hpp"

namespace tarnly::simulator {

/// What ends the program before it has begun: a text asked for, or a complaint of one line.
struct EarlyEnd {
    int exitCode;
    std::string text;
};

/// Reads the arguments that follow the program's name.
std::variant<SimulatorOptions, EarlyEnd> parseCommandLine(std::vector<std::string> arguments);

} // namespace tarnly::simulator
