#include "TarnlySimulator/World/Value.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlySimulator/World/WorldError.hpp"

namespace tarnly::simulator {
namespace {

void appendInfinity(std::string& out, double sign) { out += sign < 0 ? "-1e+9999" : "1e+9999"; }

void appendInteger(std::string& out, double number) {
    constexpr double exact = 9007199254740992; // 2^53
    tarnly::appendNumber(out, static_cast<std::int64_t>(std::clamp(std::trunc(number), -exact, exact)));
}

void appendNumber(std::string& out, ValueType type, double number) {
    const bool isInteger = type == ValueType::integer || type == ValueType::integers;
    const bool isSingle = !isInteger && type != ValueType::real;
    const bool isBeyond = isSingle && std::abs(number) > std::numeric_limits<float>::max();
    if (std::isnan(number)) {
        out += "null";
    } else if (std::isinf(number) || isBeyond) {
        appendInfinity(out, number);
    } else if (isInteger) {
        appendInteger(out, number);
    } else if (!isSingle) {
        tarnly::appendNumber(out, number);
    } else {
        tarnly::appendNumber(out, static_cast<float>(number));
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

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

[[noreturn]] void refuseValue(const char* expected) {
    throw WorldError(WorldError::Case::invalidValue, std::string("This dataref takes ") + expected + ".");
}

double numberFrom(const boost::json::value& json, ValueType type) {
    if (!json.is_number()) refuseValue("numbers");
    const auto number = json.to_number<double>();
    return type == ValueType::integer || type == ValueType::integers ? std::trunc(number) : number;
}

std::size_t checkedIndex(std::int64_t index, std::size_t size) {
    if (index < 0 || static_cast<std::uint64_t>(index) >= size)
        throw WorldError(
            WorldError::Case::invalidIndex,
            "The index " + std::to_string(index) + " is outside an array of " + std::to_string(size) + ".");
    return static_cast<std::size_t>(index);
}

Value writtenArray(std::vector<double> numbers, ValueType type, const boost::json::value& json,
                   std::optional<std::int64_t> index) {
    const std::size_t from = checkedIndex(index.value_or(0), numbers.size());
    if (const auto* several = json.if_array()) {
        if (several->size() > numbers.size() - from) refuseValue("fewer elements");
        std::ranges::transform(
            *several, numbers.begin() + static_cast<std::ptrdiff_t>(from),
            [type](const boost::json::value& element) { return numberFrom(element, type); });
    } else if (index) {
        numbers[from] = numberFrom(json, type);
    } else {
        std::ranges::fill(numbers, numberFrom(json, type));
    }
    return numbers;
}

Value writtenData(const std::string& present, const boost::json::value& json) {
    const auto* text = json.if_string();
    auto bytes = text != nullptr ? decodedBase64({text->data(), text->size()}) : std::nullopt;
    if (!bytes) refuseValue("base64 text");
    if (bytes->size() > present.size()) refuseValue("fewer bytes");
    bytes->resize(present.size(), '\0');
    return std::move(*bytes);
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

Value written(const Value& present, ValueType type, const boost::json::value& json,
              std::optional<std::int64_t> index) {
    if (const auto* numbers = std::get_if<std::vector<double>>(&present))
        return writtenArray(*numbers, type, json, index);
    if (index) throw WorldError(WorldError::Case::invalidIndex, "Only an array dataref takes an index.");
    if (const auto* bytes = std::get_if<std::string>(&present)) return writtenData(*bytes, json);
    return numberFrom(json, type);
}

std::optional<std::string> decodedBase64(std::string_view text) {
    while (!text.empty() && text.size() % 4 == 0 && text.back() == '=') {
        text.remove_suffix(1);
        if (text.ends_with('=')) text.remove_suffix(1);
    }
    if (text.size() % 4 == 1) return std::nullopt;
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const auto digit = alphabet.find(c);
        if (digit == std::string_view::npos) return std::nullopt;
        bits = (bits << 6 | static_cast<std::uint32_t>(digit)) & 0xFFFFFF;
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xFF);
    }
    return bytes;
}

} // namespace tarnly::simulator
