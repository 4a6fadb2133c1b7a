#include "TarnlySimulator/World/Value.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

#include "TarnlyPlatform/Base/Base64.hpp"

namespace tarnly::simulator {
namespace {

template <typename T>
void appendDigits(std::string& out, T number) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    out.append(text, end);
}

void appendInfinity(std::string& out, double sign) { out += sign < 0 ? "-1e+9999" : "1e+9999"; }

void appendInteger(std::string& out, double number) {
    constexpr double exact = 9007199254740992; // 2^53
    appendDigits(out, static_cast<std::int64_t>(std::clamp(std::trunc(number), -exact, exact)));
}

void appendNumber(std::string& out, ValueType type, double number) {
    if (std::isnan(number)) {
        out += "null";
    } else if (std::isinf(number)) {
        appendInfinity(out, number);
    } else if (type == ValueType::integer || type == ValueType::integers) {
        appendInteger(out, number);
    } else if (type == ValueType::real) {
        appendDigits(out, number);
    } else if (std::abs(number) > std::numeric_limits<float>::max()) {
        appendInfinity(out, number);
    } else {
        appendDigits(out, static_cast<float>(number));
    }
}

void appendArray(std::string& out, ValueType type, const std::vector<double>& numbers) {
    out += '[';
    for (std::size_t index = 0; index < numbers.size(); ++index) {
        if (index > 0) out += ',';
        appendNumber(out, type, numbers[index]);
    }
    out += ']';
}

} // namespace

std::string_view wireName(ValueType type) {
    switch (type) {
        case ValueType::integer:
            return "int";
        case ValueType::single:
            return "float";
        case ValueType::real:
            return "double";
        case ValueType::integers:
            return "int_array";
        case ValueType::singles:
            return "float_array";
        case ValueType::data:
            return "data";
    }
    return "";
}

void appendValue(std::string& out, ValueType type, const Value& value) {
    if (const auto* number = std::get_if<double>(&value)) {
        appendNumber(out, type, *number);
    } else if (const auto* numbers = std::get_if<std::vector<double>>(&value)) {
        appendArray(out, type, *numbers);
    } else {
        out += '"';
        out += base64(std::as_bytes(std::span(std::get<std::string>(value))));
        out += '"';
    }
}

} // namespace tarnly::simulator
