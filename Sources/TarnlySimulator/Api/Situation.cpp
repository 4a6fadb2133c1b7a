#include "TarnlySimulator/Api/Situation.hpp"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace tarnly::simulator {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t datagramSize = 161;
constexpr auto label = "SIMO\0"sv;
constexpr std::size_t pathOffset = 9;
constexpr std::size_t pathSize = 150;
constexpr std::uint32_t loadSituation = 1;

std::uint32_t littleEndian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (std::size_t at = 4; at-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at]);
    return value;
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

} // namespace

std::variant<Situation, UnusableDatagram> situationFrom(std::span<const std::byte> datagram) {
    const std::string_view bytes(reinterpret_cast<const char*>(datagram.data()), datagram.size());
    if (bytes.size() != datagramSize)
        return UnusableDatagram{"it has " + std::to_string(bytes.size()) + " bytes instead of 161"};
    if (!bytes.starts_with(label)) return UnusableDatagram{"it does not begin with SIMO and a zero byte"};
    const auto mode = littleEndian(bytes.substr(label.size()));
    if (mode != loadSituation)
        return UnusableDatagram{"its mode is " + std::to_string(mode) + " instead of 1"};
    const auto field = bytes.substr(pathOffset, pathSize);
    const auto path = field.substr(0, field.find('\0'));
    const auto rest = bytes.substr(pathOffset + path.size());
    if (path.empty()) return UnusableDatagram{"its path is empty"};
    if (std::ranges::any_of(path, isControl)) return UnusableDatagram{"its path contains control characters"};
    if (rest.find_first_not_of('\0') != std::string_view::npos)
        return UnusableDatagram{"its path is not followed by zero bytes alone"};
    return Situation{std::string(path)};
}

} // namespace tarnly::simulator
