#include "TarnlyPlatform/Base/Text.hpp"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

namespace tarnly {
namespace {

constexpr std::size_t largestRatio = 16;

icu::UnicodeString toUnicode(std::string_view text) {
    auto result =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    if (result.isBogus()) throw std::bad_alloc();
    return result;
}

icu::UnicodeString decomposed(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFDInstance(status);
    if (U_FAILURE(status)) throw std::runtime_error("ICU has no normalization data");
    auto result = normalizer->normalize(toUnicode(text), status);
    if (U_FAILURE(status)) throw std::runtime_error("ICU cannot normalize a text");
    return result;
}

/// Goes through all of `a`, wherever the two differ.
bool equalInConstantTime(const icu::UnicodeString& a, const icu::UnicodeString& b) {
    if (b.isEmpty()) return a.isEmpty();
    unsigned difference = a.length() == b.length() ? 0 : 1;
    for (std::int32_t i = 0; i < a.length(); ++i)
        difference |= static_cast<unsigned>(a.charAt(i) ^ b.charAt(i % b.length()));
    return difference == 0;
}

/// Where the next byte that is not ASCII may be, from `start` on: skips eight bytes at a time, which is most
/// of what comes along.
std::int64_t behindAscii(const std::uint8_t* data, std::int64_t start, std::int64_t length) {
    constexpr auto wordSize = static_cast<std::int64_t>(sizeof(std::uint64_t));
    constexpr std::uint64_t notAscii = 0x8080'8080'8080'8080;
    std::uint64_t word = 0;
    for (; length - start >= wordSize; start += wordSize) {
        std::memcpy(&word, data + start, sizeof word);
        if ((word & notAscii) != 0) break;
    }
    return start;
}

} // namespace

bool canonicallyEqual(std::string_view a, std::string_view b) {
    // Equivalent texts differ in length by a factor of 9 at most. Normalizing takes quadratic time, which is
    // not for a stranger to spend.
    if (a.size() > largestRatio * b.size() || b.size() > largestRatio * a.size()) return false;
    return equalInConstantTime(decomposed(a), decomposed(b));
}

std::string upperCased(std::string_view text) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode status = U_ZERO_ERROR;
    const char* const noLanguage = "";
    icu::CaseMap::utf8ToUpper(noLanguage, 0,
                              icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())), sink,
                              nullptr, status);
    if (U_FAILURE(status)) throw std::runtime_error("ICU cannot write a text in capitals");
    return result;
}

void prepareText() {
    static_cast<void>(canonicallyEqual("\u00E9", "e\u0301"));
    static_cast<void>(upperCased("\u00DF"));
}

bool isWellFormedUtf8(std::string_view bytes) {
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto length = static_cast<std::int64_t>(bytes.size());
    std::int64_t i = behindAscii(data, 0, length);
    while (i < length) {
        UChar32 codePoint = 0;
        U8_NEXT(data, i, length, codePoint);
        if (codePoint < 0) return false;
        if (codePoint < 0x80) i = behindAscii(data, i, length);
    }
    return true;
}

std::string wellFormedUtf8(std::string bytes) {
    if (isWellFormedUtf8(bytes)) return bytes;
    constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto length = static_cast<std::int64_t>(bytes.size());
    std::string result;
    result.reserve(bytes.size() + 16);
    std::int64_t i = 0;
    while (i < length) {
        const auto start = i;
        UChar32 codePoint = 0;
        U8_NEXT(data, i, length, codePoint);
        if (codePoint < 0) {
            result += replacement;
        } else {
            result.append(bytes, static_cast<std::size_t>(start), static_cast<std::size_t>(i - start));
        }
    }
    return result;
}

std::string printable(std::string_view text) {
    // The second byte of the control characters U+0080 to U+009F is below 0xA0; their first is 0xC2.
    std::string result = wellFormedUtf8(std::string(text));
    for (std::size_t i = 0; i < result.size(); ++i) {
        const auto byte = static_cast<unsigned char>(result[i]);
        const bool isSecondSet = byte == 0xC2 && static_cast<unsigned char>(result[i + 1]) < 0xA0;
        if (isSecondSet) result.erase(i + 1, 1);
        if (byte < 0x20 || byte == 0x7F || isSecondSet) result[i] = '?';
    }
    return result;
}

std::string base64(std::span<const std::byte> bytes) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(3, bytes.size()))) {
        std::uint32_t group = 0; // three bytes, zeros where the input has ended
        for (std::size_t i = 0; i < 3; ++i) {
            group = group << 8 | (i < bytes.size() ? std::to_integer<std::uint32_t>(bytes[i]) : 0);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text += i <= bytes.size() ? alphabet[group >> (18 - 6 * i) & 63] : '=';
        }
    }
    return text;
}

} // namespace tarnly
