#include "TarnlyPlatform/Base/Error.hpp"

namespace tarnly {
namespace {

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

void appendHexadecimal(std::string& out, char c) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(c);
    if (value >= 0x10) out += digits[value / 16];
    out += digits[value % 16];
}

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
    if (!isControl(c)) {
        out += c;
        return;
    }
    out += "\\u{";
    appendHexadecimal(out, c);
    out += '}';
}

} // namespace

std::string quoted(std::string_view text) {
    std::string out = "\"";
    out.reserve(text.size() + 2);
    for (const char c : text)
        appendEscaped(out, c);
    out += '"';
    return out;
}

} // namespace tarnly
