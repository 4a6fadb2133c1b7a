#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnly {

/// The value of a JSON number's text when it is a whole number in the 64-bit range, however it is written:
/// 7, 7.0 and 0.7e1 are. Decided by the digits: a double cannot tell -9223372036854775809 from
/// -9223372036854775808. Absent for -0, which a double can hold and an integer cannot.
std::optional<std::int64_t> wholeNumber(std::string_view text);

/// The double nearest to a JSON number's text; infinity for one beyond its range. `approximate` is any
/// estimate that tells the tiny from the huge.
double nearestDouble(std::string_view text, double approximate);

} // namespace tarnly
