#include "TarnlyPlatform/Base/Base64.hpp"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace tarnly {

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
