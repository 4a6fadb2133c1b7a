#include "TarnlyPlatform/Login/DesktopEntry.hpp"

#include <algorithm>
#include <stdexcept>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr std::string_view blanks = " \t\r";
/// Each escaped character with the letter that stands for it after a backslash.
constexpr std::string_view escaped = " \n\t\r\\";
constexpr std::string_view letters = "sntr\\";
constexpr auto none = std::string_view::npos;

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == none) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Takes the first line off `text`.
std::string_view takeLine(std::string_view& text) {
    const auto end = text.find('\n');
    const auto line = text.substr(0, end);
    text.remove_prefix(end == none ? text.size() : end + 1);
    return trimmed(line);
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto letter = text[i] == '\\' && i + 1 < text.size() ? letters.find(text[i + 1]) : none;
        if (letter != none) ++i;
        result += letter == none ? text[i] : escaped[letter];
    }
    return result;
}

std::string lowerCased(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
    });
    return text;
}

void requireRepresentable(std::string_view text) {
    const auto isControl = [](char c) { return (c >= '\0' && c < ' ' && c != '\t') || c == '\x7F'; };
    if (std::ranges::any_of(text, isControl)) throw std::invalid_argument("a control character");
    if (wellFormedUtf8(std::string(text)) != text) throw std::invalid_argument("not UTF-8");
}

std::string quotedArgument(std::string_view argument) {
    constexpr std::string_view reserved = " \t\n\"'\\><~|&;$*?#()`";
    constexpr std::string_view escapedInQuotes = "\"`$\\";
    const bool needsQuotes = argument.empty() || argument.find_first_of(reserved) != none;
    std::string result(needsQuotes ? "\"" : "");
    for (const char c : argument) {
        if (escapedInQuotes.find(c) != none) result += '\\';
        if (c == '%') result += '%';
        result += c;
    }
    return needsQuotes ? result + '"' : result;
}

/// The first word of a command line, with its quotes resolved.
std::string firstWord(std::string_view line) {
    line = trimmed(line);
    std::string word;
    char quote = '\0';
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote == '\0' && blanks.find(c) != none) break;
        if (c == quote) {
            quote = '\0';
        } else if (quote == '\0' && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
            word += line[++i];
        } else {
            word += c;
        }
    }
    return word;
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::parse(std::string_view text) {
    std::optional<DesktopEntry> entry;
    bool isInGroup = false;
    while (!text.empty()) {
        const auto line = takeLine(text);
        const auto equals = line.find('=');
        if (line.starts_with('[')) {
            isInGroup = line == "[Desktop Entry]";
            if (isInGroup && !entry) entry.emplace();
        } else if (isInGroup && !line.starts_with('#') && equals != none) {
            entry->values_[std::string(trimmed(line.substr(0, equals)))] = trimmed(line.substr(equals + 1));
        }
    }
    return entry;
}

std::optional<std::string> DesktopEntry::value(const std::string& key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return unescaped(found->second);
}

bool DesktopEntry::flag(const std::string& key, bool otherwise) const {
    const auto text = lowerCased(value(key).value_or(""));
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    return otherwise;
}

std::string desktopEntryLine(std::string_view key, std::string_view value) {
    requireRepresentable(value);
    std::string line = std::string(key) + '=';
    for (std::size_t i = 0; i < value.size(); ++i) {
        const bool isAtAnEnd = i == 0 || i + 1 == value.size();
        const auto letter = value[i] == ' ' && !isAtAnEnd ? none : escaped.find(value[i]);
        if (letter == none) {
            line += value[i];
        } else {
            line.append(1, '\\').append(1, letters[letter]);
        }
    }
    return line + '\n';
}

std::string execValue(const std::vector<std::string>& command) {
    if (command.empty() || command.front().empty()) throw std::invalid_argument("no program");
    if (command.front().find('=') != std::string::npos)
        throw std::invalid_argument("\"=\" in the program's path");
    std::string result;
    for (const auto& argument : command) {
        if (!result.empty()) result += ' ';
        result += quotedArgument(argument);
    }
    return result;
}

std::string programOfExec(std::string_view exec) {
    auto program = firstWord(exec);
    for (auto at = program.find("%%"); at != std::string::npos; at = program.find("%%", at + 1))
        program.erase(at, 1);
    return program;
}

} // namespace tarnly
