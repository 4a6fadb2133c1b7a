#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnly {

/// `text` as a decimal integer: ASCII digits with at most one sign, "+" or "-", before them. Absent for
/// anything else and beyond 64 bits.
std::optional<std::int64_t> parseDecimalInteger(std::string_view text);

} // namespace tarnly
