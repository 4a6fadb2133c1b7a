#include "TarnlyPlatform/Json/JsonWriter.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace tarnly {
namespace {

template <typename Number>
void appendNumber(std::string& out, Number value) {
    std::array<char, 32> digits; // the longest double, -2.2250738585072014e-308, has 24 characters
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(digits.data(), end);
}

void appendControl(std::string& out, unsigned char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    out += "\\u00";
    out += digits[c / 16];
    out += digits[c % 16];
}

void appendEscaped(std::string& out, char c) {
    switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '/':
            out += "\\/";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            appendControl(out, static_cast<unsigned char>(c));
            break;
    }
}

bool needsEscape(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\' || c == '/'; }

} // namespace

void JsonWriter::beginObject() {
    separate();
    out_ += '{';
    needsComma_ = false;
}

void JsonWriter::key(std::string_view name) {
    separate();
    quote(name);
    out_ += ':';
    needsComma_ = false;
}

void JsonWriter::endObject() {
    out_ += '}';
    needsComma_ = true;
}

void JsonWriter::beginArray() {
    separate();
    out_ += '[';
    needsComma_ = false;
}

void JsonWriter::endArray() {
    out_ += ']';
    needsComma_ = true;
}

void JsonWriter::null() {
    separate();
    out_ += "null";
}

void JsonWriter::boolean(bool value) {
    separate();
    out_ += value ? "true" : "false";
}

void JsonWriter::integer(std::int64_t value) {
    separate();
    appendNumber(out_, value);
}

void JsonWriter::number(double value) {
    if (!std::isfinite(value)) throw JsonError("a number that is not finite has no JSON form");
    separate();
    appendNumber(out_, value);
}

void JsonWriter::string(std::string_view value) {
    separate();
    quote(value);
}

std::string JsonWriter::take() {
    needsComma_ = false;
    return std::exchange(out_, {});
}

void JsonWriter::separate() {
    if (needsComma_) out_ += ',';
    needsComma_ = true;
}

void JsonWriter::quote(std::string_view text) {
    out_ += '"';
    std::size_t plain = 0; // where the run of characters that need no escape began
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!needsEscape(text[i])) continue;
        out_.append(text, plain, i - plain);
        appendEscaped(out_, text[i]);
        plain = i + 1;
    }
    out_.append(text, plain);
    out_ += '"';
}

} // namespace tarnly
