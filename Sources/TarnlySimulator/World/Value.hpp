#pragma once

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

} // namespace tarnly::simulator
