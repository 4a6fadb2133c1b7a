#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tarnly {

/// Whether it is one of 0 to 9, in any locale.
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether the byte goes on with a character of UTF-8 that has begun before it.
constexpr bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Whether two UTF-8 texts are the same by Unicode canonical equivalence: "é" as one code point and as "e"
/// with a combining accent are equal, letter case counts. How long it takes does not tell where they differ.
bool canonicallyEqual(std::string_view a, std::string_view b);

/// `text` in upper case by the full Unicode rules of the root locale: "ß" becomes "SS".
std::string upperCased(std::string_view text);

/// Has the libraries' tables ready, so that the first use of them asks for no memory and no file in the
/// middle of a lesson. Throws where they cannot be had.
void prepareText();

bool isWellFormedUtf8(std::string_view bytes);

/// `bytes` as well-formed UTF-8: each maximal part of an ill-formed sequence is replaced by U+FFFD, as the
/// Unicode Standard recommends (chapter 3.9, "Substitution of Maximal Subparts").
std::string wellFormedUtf8(std::string bytes);

/// `text` as a terminal may be given it: well-formed, and without control characters, which become "?".
std::string printable(std::string_view text);

/// Standard base64 (RFC 4648, section 4), padded, without line breaks.
std::string base64(std::span<const std::byte> bytes);

} // namespace tarnly
