#pragma once

#include <cstddef>

namespace tarnly {

/// Lets the process have as many file descriptors as the system will ever let it; says how many these are.
/// For the beginning of a program.
std::size_t raiseDescriptorLimit();

/// How many the process has now; 0 where the system does not tell. From any thread.
std::size_t openDescriptors();

} // namespace tarnly
