#include "TarnlySimulator/Api/Query.hpp"

#include <charconv>

#include "TarnlySimulator/World/Parts.hpp"

namespace tarnly::simulator {
namespace {

std::string percentDecoded(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned char byte = 0;
        if (text[at] == '%' && at + 2 < text.size()) {
            const char* digits = text.data() + at + 1;
            if (std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
                out += static_cast<char>(byte);
                at += 2;
                continue;
            }
        }
        out += text[at] == '+' ? ' ' : text[at];
    }
    return out;
}

} // namespace

std::vector<std::string> queryValues(std::string_view query, std::string_view key) {
    std::vector<std::string> out;
    for (const auto pair : parts(query, '&')) {
        const auto equals = pair.find('=');
        if (equals == std::string_view::npos || percentDecoded(pair.substr(0, equals)) != key) continue;
        out.push_back(percentDecoded(pair.substr(equals + 1)));
    }
    return out;
}

} // namespace tarnly::simulator
