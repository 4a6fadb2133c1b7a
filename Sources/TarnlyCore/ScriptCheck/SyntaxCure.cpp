#include "TarnlyCore/ScriptCheck/SyntaxCure.hpp"

namespace tarnly {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// The last character before `at` that is no blank; NUL where there is none.
char before(std::string_view text, std::size_t at) {
    const auto place = text.substr(0, at).find_last_not_of(" \t\r\n");
    return place == std::string_view::npos ? '\0' : text[place];
}

bool endsValue(char letter) {
    return letter == '"' || letter == '}' || letter == ']' || (letter >= '0' && letter <= '9') ||
           (letter >= 'a' && letter <= 'z');
}

} // namespace

std::string syntaxCure(std::string_view text, std::size_t at) {
    if (text.starts_with(byteOrderMark)) return "; save it as UTF-8 without a byte-order mark";
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) return "; it is empty";
    if (at >= text.size() || text.find_first_not_of(" \t\r\n", at) == std::string_view::npos)
        return "; it ends too early: close what is open by quotation marks, ] or }";
    const auto last = before(text, at);
    switch (text[at]) {
        case ']':
        case '}':
            return last == ',' ? "; remove the comma before it" : "";
        case '/':
        case '#':
            return "; remove the comment, which JSON does not have";
        case '\'':
            return "; write \" in place of '";
        case '"':
        case '{':
        case '[':
            return endsValue(last) ? "; a comma or a colon is missing before it" : "";
        default:
            return last == '{' || last == ',' ? "; put keys and texts in quotation marks" : "";
    }
}

} // namespace tarnly
