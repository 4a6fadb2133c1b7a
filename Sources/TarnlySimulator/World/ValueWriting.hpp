#pragma once

#include <boost/json/value.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlySimulator/World/Value.hpp"

namespace tarnly::simulator {

/// `present` after `json` has been written to it.
///
/// A number written to an array without an index fills the whole array; an array goes to the elements from
/// `index` (0 without one) on, a number with an index to that element. Data take base64 text, padded with NUL
/// to the length that they have. Throws `ApiError` for a value of another kind, too many elements or an index
/// outside.
Value written(const Value& present, ValueType type, const boost::json::value& json,
              std::optional<std::int64_t> index);

/// The bytes of a base64 text (RFC 4648, section 4), padded or not; absent when it is none.
std::optional<std::string> decodedBase64(std::string_view text);

} // namespace tarnly::simulator
