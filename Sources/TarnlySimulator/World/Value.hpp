#pragma once

#include <boost/json/value.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarnly::simulator {

/// The kinds of values that a dataref can have, as the catalogue names them.
enum class ValueType { integer, single, real, integers, singles, data };

/// For example "float_array".
std::string_view wireName(ValueType type);

constexpr bool isArray(ValueType type) { return type == ValueType::integers || type == ValueType::singles; }

/// A number, an array of numbers, or the bytes of a data dataref with their padding.
using Value = std::variant<double, std::vector<double>, std::string>;

/// Appends `value` as the simulator prints it, which is not always JSON: infinity is 1e+9999 with its sign,
/// NaN is null. Integers lose their fraction, single-precision numbers take their shortest form, bytes become
/// base64 text.
void appendValue(std::string& out, ValueType type, const Value& value);

/// `present` after `json` has been written to it.
///
/// A number written to an array without an index fills the whole array; an array goes to the elements from
/// `index` (0 without one) on, a number with an index to that element. Data take base64 text, padded with NUL
/// to the length that they have. Throws `WorldError` for a value of another kind, too many elements or an
/// index outside.
Value written(const Value& present, ValueType type, const boost::json::value& json,
              std::optional<std::int64_t> index);

/// The bytes of a base64 text (RFC 4648, section 4), padded or not; absent when it is none.
std::optional<std::string> decodedBase64(std::string_view text);

} // namespace tarnly::simulator
