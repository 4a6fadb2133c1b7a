#pragma once

#include <cstdint>
#include <string_view>

namespace tarnly::simulator {

/// A well-mixed number from `value`, different for different values: the finaliser of SplitMix64 (Steele, Lea
/// and Flood, "Fast Splittable Pseudorandom Number Generators", 2014).
constexpr std::uint64_t mix(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15u;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
    return value ^ (value >> 31);
}

/// A number that depends on every byte of `text`, the same on every computer.
constexpr std::uint64_t mixText(std::string_view text) {
    std::uint64_t value = text.size();
    for (const char c : text)
        value = mix(value ^ static_cast<unsigned char>(c));
    return value;
}

/// From 0 to just below 1.
constexpr double fraction(std::uint64_t mixed) { return static_cast<double>(mixed >> 11) * 0x1p-53; }

} // namespace tarnly::simulator
