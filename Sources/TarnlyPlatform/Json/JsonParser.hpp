#pragma once

#include <boost/json/value.hpp>
#include <cstdint>
#include <optional>
#include <string_view>

#include "TarnlyPlatform/Json/JsonError.hpp"

namespace tarnly {

/// What becomes of a number beyond the range of a double, such as 1e+9999.
enum class NonFinite { rejected, kept };

/// Parses one JSON text (RFC 8259) of at most 64 levels of nesting.
///
/// Numbers are read exactly: whole ones in the 64-bit range as integers, however they are written, others as
/// the nearest double. Of duplicate keys the last counts. Throws `JsonError` for anything that is not
/// exactly one JSON value: trailing text, a byte-order mark, a lone surrogate escape, nesting beyond the
/// limit included.
boost::json::value parseJson(std::string_view text, NonFinite nonFinite = NonFinite::rejected);

/// The value of a JSON number's text when it is a whole number in the 64-bit range, however it is written:
/// 7, 7.0 and 0.7e1 are. Decided by the digits: a double cannot tell -9223372036854775809 from
/// -9223372036854775808. Absent for -0, which a double can hold and an integer cannot.
std::optional<std::int64_t> wholeNumber(std::string_view text);

/// The double nearest to a JSON number's text; infinity for one beyond its range. `approximate` is any
/// estimate that tells the tiny from the huge.
double nearestDouble(std::string_view text, double approximate);

} // namespace tarnly
