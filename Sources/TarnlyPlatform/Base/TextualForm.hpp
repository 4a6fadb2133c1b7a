#pragma once

#include <string>
#include <string_view>

namespace tarnly {

/// `text` in double quotes as an error shows it: `"` and `\` escaped by a backslash; newline, return, tab and
/// NUL as `\n`, `\r`, `\t` and `\0`; every other ASCII control character as `\u{1}`, in upper-case
/// hexadecimal digits.
std::string quoted(std::string_view text);

/// The textual form of an error case that carries one text: `caseName("text")`.
std::string errorText(std::string_view caseName, std::string_view text);

} // namespace tarnly
