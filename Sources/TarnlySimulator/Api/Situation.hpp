#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <variant>

namespace tarnly::simulator {

/// A request to load a saved situation, as it comes in one datagram.
struct Situation {
    /// Relative to the simulator's folder, for example "Output/situations/Pattern 1.sit".
    std::string path;
};

/// Why a datagram is no such request, for people.
struct UnusableDatagram {
    std::string reason;
};

/// Reads the 161 bytes of a datagram: the label "SIMO" with its NUL, the mode 1 as a 32-bit little-endian
/// integer, the path in 150 bytes padded with NUL, and two more NUL.
std::variant<Situation, UnusableDatagram> situationFrom(std::span<const std::byte> datagram);

} // namespace tarnly::simulator
