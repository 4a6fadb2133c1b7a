#include "TarnlyPlatform/Base/Error.hpp"

#include <algorithm>

namespace tarnly {
namespace {

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

void appendHexadecimal(std::string& out, char c) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(c);
    if (value >= 0x10) out += digits[value / 16];
    out += digits[value % 16];
}

bool needsEscape(char c) { return isControl(c) || c == '"' || c == '\\'; }

void appendEscaped(std::string& out, char c) {
    switch (c) {
        case '"':
            out += "\\\"";
            return;
        case '\\':
            out += "\\\\";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        case '\0':
            out += "\\0";
            return;
        default:
            break;
    }
    out += "\\u{";
    appendHexadecimal(out, c);
    out += '}';
}

} // namespace

std::string quoted(std::string_view text) {
    std::string out = "\"";
    out.reserve(text.size() + 2);
    while (!text.empty()) {
        const auto special = std::ranges::find_if(text, needsEscape);
        const auto plain = static_cast<std::size_t>(special - text.begin());
        out.append(text, 0, plain);
        if (special != text.end()) appendEscaped(out, *special);
        text.remove_prefix(std::min(plain + 1, text.size()));
    }
    out += '"';
    return out;
}

} // namespace tarnly
