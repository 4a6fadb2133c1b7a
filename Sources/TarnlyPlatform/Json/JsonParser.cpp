#include "TarnlyPlatform/Json/JsonParser.hpp"

#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

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

using boost::json::error;
using boost::json::error_code;
using boost::json::string_view;

/// Builds the value from the parser's events.
class Builder {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    explicit Builder(NonFinite nonFinite) : nonFinite_(nonFinite) { stack_.reset(); }

    boost::json::value release() { return stack_.release(); }

    bool on_document_begin(error_code&) { return true; }
    bool on_document_end(error_code&) { return true; }
    bool on_object_begin(error_code&) { return true; }
    bool on_object_end(std::size_t size, error_code&) {
        stack_.push_object(size);
        return true;
    }
    bool on_array_begin(error_code&) { return true; }
    bool on_array_end(std::size_t size, error_code&) {
        stack_.push_array(size);
        return true;
    }
    bool on_key_part(string_view part, std::size_t, error_code&) {
        stack_.push_chars(part);
        return true;
    }
    bool on_key(string_view part, std::size_t, error_code&) {
        stack_.push_key(part);
        return true;
    }
    bool on_string_part(string_view part, std::size_t, error_code&) {
        stack_.push_chars(part);
        return true;
    }
    bool on_string(string_view part, std::size_t, error_code&) {
        stack_.push_string(part);
        return true;
    }
    bool on_number_part(string_view part, error_code&) {
        number_.append(part.data(), part.size());
        return true;
    }
    bool on_int64(std::int64_t value, string_view part, error_code& ec) {
        if (value == 0) return pushNumber(part, 0, ec); // it may be -0
        number_.clear();
        stack_.push_int64(value);
        return true;
    }
    bool on_uint64(std::uint64_t value, string_view part, error_code& ec) {
        return pushNumber(part, static_cast<double>(value), ec);
    }
    bool on_double(double approximate, string_view part, error_code& ec) {
        return pushNumber(part, approximate, ec);
    }
    bool on_bool(bool value, error_code&) {
        stack_.push_bool(value);
        return true;
    }
    bool on_null(error_code&) {
        stack_.push_null();
        return true;
    }
    bool on_comment_part(string_view, error_code&) { return true; }
    bool on_comment(string_view, error_code&) { return true; }

  private:
    /// From the text: the library's own conversion is off by a unit in the last place now and then.
    bool pushNumber(string_view lastPart, double approximate, error_code& ec) {
        number_.append(lastPart.data(), lastPart.size());
        const auto text = std::exchange(number_, {});
        if (const auto whole = wholeNumber(text)) {
            stack_.push_int64(*whole);
            return true;
        }
        const double value = nearestDouble(text, approximate);
        if (!std::isfinite(value) && nonFinite_ == NonFinite::rejected) {
            ec = error::exponent_overflow;
            return false;
        }
        stack_.push_double(value);
        return true;
    }

    NonFinite nonFinite_;
    boost::json::value_stack stack_;
    std::string number_;
};

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

boost::json::value parseJson(std::string_view text, NonFinite nonFinite) {
    boost::json::parse_options options;
    options.max_depth = 64;
    boost::json::basic_parser<Builder> parser(options, nonFinite);
    error_code ec;
    const auto parsed = parser.write_some(false, text.data(), text.size(), ec);
    if (!ec && parsed < text.size()) ec = error::extra_data;
    if (ec) throw JsonError(ec.message());
    return parser.handler().release();
}

} // namespace tarnly
