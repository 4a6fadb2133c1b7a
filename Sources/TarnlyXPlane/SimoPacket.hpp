#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace tarnly {

/// The 161 bytes of the datagram that makes the simulator load a situation: the label "SIMO" and a zero, the
/// mode (1, load) as 32 bits little-endian, the path in 150 bytes filled up with zeros, two zeros.
/// `relativePath`, UTF-8, is relative to the simulator's folder; what exceeds 150 bytes is cut off.
std::vector<std::byte> buildSimoLoadSituationPacket(std::string_view relativePath);

} // namespace tarnly
