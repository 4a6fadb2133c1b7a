#include "TarnlySimulator/World/ValueWriting.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlySimulator/Api/ApiError.hpp"

namespace tarnly::simulator {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

[[noreturn]] void refuseValue(const char* expected) {
    throw ApiError(400, "invalid_value", std::string("This dataref takes ") + expected + ".");
}

double numberFrom(const boost::json::value& json, ValueType type) {
    if (!json.is_number()) refuseValue("numbers");
    const auto number = json.to_number<double>();
    return type == ValueType::integer || type == ValueType::integers ? std::trunc(number) : number;
}

std::size_t checkedIndex(std::int64_t index, std::size_t size) {
    if (index < 0 || static_cast<std::uint64_t>(index) >= size)
        throw ApiError(
            400, "invalid_index",
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

Value written(const Value& present, ValueType type, const boost::json::value& json,
              std::optional<std::int64_t> index) {
    if (const auto* numbers = std::get_if<std::vector<double>>(&present))
        return writtenArray(*numbers, type, json, index);
    if (index) throw ApiError(400, "invalid_index", "Only an array dataref takes an index.");
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
