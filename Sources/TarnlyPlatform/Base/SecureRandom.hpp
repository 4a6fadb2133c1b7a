#pragma once

#include <cstddef>
#include <span>

namespace tarnly {

/// Fills `bytes` from the system's cryptographically secure generator. Ends the process when there is none: a
/// weak token would be worse.
void fillSecureRandom(std::span<std::byte> bytes);

} // namespace tarnly
