#include "TarnlyPlatform/Json/JsonWriter.hpp"

#include <array>
#include <cmath>
#include <cstring>
#include <utility>

#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

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

constexpr bool needsEscape(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\' || c == '/';
}

constexpr std::uint64_t eachByte(unsigned char byte) { return 0x0101'0101'0101'0101U * byte; }

/// Whether one of the eight bytes of `word` is below `limit`, which is 128 at most: taking it away borrows.
constexpr bool hasBelow(std::uint64_t word, unsigned char limit) {
    return ((word - eachByte(limit)) & ~word & eachByte(0x80)) != 0;
}

constexpr bool hasByte(std::uint64_t word, char byte) {
    return hasBelow(word ^ eachByte(static_cast<unsigned char>(byte)), 1);
}

/// Of each byte, whether it is of ASCII and stands for itself.
constexpr auto isPlain = [] {
    std::array<bool, 256> table{};
    for (std::size_t byte = 0; byte < 0x80; ++byte)
        table[byte] = !needsEscape(static_cast<char>(byte));
    return table;
}();

/// How many bytes at the beginning stand for themselves: of ASCII, and without an escape. Looks at eight at a
/// time as long as it can.
std::size_t plainLength(std::string_view text) {
    std::size_t length = 0;
    for (; text.size() - length >= sizeof(std::uint64_t); length += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + length, sizeof word);
        const bool isAscii = (word & eachByte(0x80)) == 0;
        if (!isAscii || hasBelow(word, 0x20) || hasByte(word, '"') || hasByte(word, '\\') ||
            hasByte(word, '/'))
            break;
    }
    while (length < text.size() && isPlain[static_cast<unsigned char>(text[length])])
        ++length;
    return length;
}

/// `text` must be well-formed.
void appendWithEscapes(std::string& out, std::string_view text) {
    std::size_t plain = 0; // where the run of characters that need no escape began
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!needsEscape(text[i])) continue;
        out.append(text, plain, i - plain);
        appendEscaped(out, text[i]);
        plain = i + 1;
    }
    out.append(text, plain);
}

/// The rest of a text, from its first byte on that is not plain.
void appendMixed(std::string& out, std::string_view text) {
    if (isWellFormedUtf8(text)) {
        appendWithEscapes(out, text);
    } else {
        appendWithEscapes(out, wellFormedUtf8(std::string(text)));
    }
}

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
    return takePiece();
}

std::string JsonWriter::takePiece() { return std::exchange(out_, {}); }

void JsonWriter::separate() {
    if (needsComma_) out_ += ',';
    needsComma_ = true;
}

void JsonWriter::quote(std::string_view text) {
    out_ += '"';
    const auto plain = plainLength(text);
    out_.append(text, 0, plain);
    if (plain < text.size()) appendMixed(out_, text.substr(plain));
    out_ += '"';
}

} // namespace tarnly
