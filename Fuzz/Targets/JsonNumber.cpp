#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

#include "Fuzz/Targets.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::fuzz {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether all of `text` is a number as RFC 8259, section 6, has it.
bool isJsonNumber(std::string_view text) {
    const auto skipDigits = [&] {
        const auto before = text.size();
        while (!text.empty() && isDigit(text.front()))
            text.remove_prefix(1);
        return text.size() < before;
    };
    const auto skip = [&](std::string_view any) {
        const bool isThere = !text.empty() && any.find(text.front()) != std::string_view::npos;
        if (isThere) text.remove_prefix(1);
        return isThere;
    };
    skip("-");
    if (!skip("0") && !skipDigits()) return false;
    if (skip(".") && !skipDigits()) return false;
    if (skip("eE")) {
        skip("+-");
        if (!skipDigits()) return false;
    }
    return text.empty();
}

/// Whether the exponent is so long that the parser need not read the number.
bool isExponentLong(std::string_view number) {
    constexpr std::size_t readInAnyCase = 9;
    const auto letter = number.find_first_of("eE");
    if (letter == std::string_view::npos) return false;
    const auto digits = number.find_first_of("123456789", letter);
    return digits != std::string_view::npos && number.size() - digits > readInAnyCase;
}

std::string_view withoutSpace(std::string_view text) {
    constexpr std::string_view space = " \t\r\n";
    const auto first = text.find_first_not_of(space);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

std::optional<boost::json::value> parsed(std::string_view text, NonFinite nonFinite) {
    try {
        return parseJson(text, nonFinite);
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

/// Half of the inputs are made of what numbers are made of.
std::string textOf(std::string_view bytes) {
    Choices choices(bytes);
    if ((choices.byte() & 1) == 0) return std::string(choices.rest());
    std::string text;
    while (!choices.isAtEnd())
        text += "0123456789+-.eE "[choices.below(16)];
    return text;
}

} // namespace

void jsonNumber(std::string_view bytes) {
    const auto text = textOf(bytes);
    const std::string number(withoutSpace(text));
    const auto value = parsed(text, NonFinite::kept);
    if (!isJsonNumber(number)) return require(!value || !value->is_number(), "only numbers are numbers");
    if (!value && isExponentLong(number)) return;
    require(value && value->is_number(), "numbers are numbers");
    const double expected = std::strtod(number.c_str(), nullptr);
    const auto found = value->to_number<double>();
    require(found == expected && std::signbit(found) == std::signbit(expected), "the nearest double");
    if (value->is_int64() && std::numeric_limits<long double>::digits >= 64) {
        require(static_cast<long double>(value->get_int64()) == std::strtold(number.c_str(), nullptr),
                "integers are exact");
    }
    require(parsed(text, NonFinite::rejected).has_value() == std::isfinite(expected), "others are refused");
}

} // namespace tarnly::fuzz
