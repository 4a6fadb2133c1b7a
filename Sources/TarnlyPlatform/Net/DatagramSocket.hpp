#pragma once

#include <cstddef>
#include <vector>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {

/// Sends `bytes` as one UDP datagram from a port of the system's choice, and returns when it has been handed
/// to the network; whether anybody took it is not known.
///
/// Throws `NetworkError`: `connectionFailed` when the host has no address, `sendFailed` when none of its
/// addresses can be sent to or the datagram is too long.
Task<> sendDatagram(Endpoint endpoint, std::vector<std::byte> bytes);

} // namespace tarnly
