#include "TarnlyPlatform/Json/JsonNumber.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

namespace tarnly {
namespace {

/// Beyond these an exponent makes any number of a readable length zero or too large.
constexpr std::int64_t hugeExponent = 1'000'000'000'000;
constexpr std::size_t mostDigits = 19; // 9223372036854775807

std::int64_t exponentOf(std::string_view text) {
    const auto letter = text.find_first_of("eE");
    if (letter == std::string_view::npos) return 0;
    text.remove_prefix(letter + 1);
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t exponent = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (result.ec == std::errc()) return std::clamp(exponent, -hugeExponent, hugeExponent);
    return text.starts_with('-') ? -hugeExponent : hugeExponent;
}

/// A number as its sign, its digits without zeros at the ends, and the power of ten that they are multiplied
/// by.
struct Decimal {
    bool isNegative = false;
    std::string digits;
    std::int64_t exponent = 0;
};

Decimal decimalOf(std::string_view text) {
    Decimal decimal;
    decimal.exponent = exponentOf(text);
    decimal.isNegative = text.starts_with('-');
    if (decimal.isNegative) text.remove_prefix(1);
    text = text.substr(0, text.find_first_of("eE"));
    const auto point = text.find('.');
    decimal.digits = text.substr(0, point);
    if (point != std::string_view::npos) {
        const auto fraction = text.substr(point + 1);
        decimal.digits += fraction;
        decimal.exponent -= static_cast<std::int64_t>(fraction.size());
    }
    const auto last = decimal.digits.find_last_not_of('0');
    decimal.exponent += static_cast<std::int64_t>(decimal.digits.size() - (last + 1));
    decimal.digits.resize(last + 1);
    decimal.digits.erase(0, decimal.digits.find_first_not_of('0'));
    return decimal;
}

} // namespace

std::optional<std::int64_t> wholeNumber(std::string_view text) {
    auto [isNegative, digits, exponent] = decimalOf(text);
    if (digits.empty()) return isNegative ? std::nullopt : std::optional<std::int64_t>(0);
    if (exponent < 0 || exponent > static_cast<std::int64_t>(mostDigits)) return std::nullopt;
    digits.append(static_cast<std::size_t>(exponent), '0');
    if (isNegative) digits.insert(0, "-");
    std::int64_t value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec != std::errc()) return std::nullopt;
    return value;
}

double nearestDouble(std::string_view text, double approximate) {
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    const bool isTiny = std::abs(approximate) < 1;
    return isTiny ? approximate : std::copysign(std::numeric_limits<double>::infinity(), approximate);
}

} // namespace tarnly
