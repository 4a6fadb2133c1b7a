#include "TarnlyXPlane/SimoPacket.hpp"

#include <algorithm>

namespace tarnly {
namespace {

using namespace std::string_view_literals;

/// The label with its terminator, then the mode.
constexpr auto head = "SIMO\0\1\0\0\0"sv;
constexpr std::size_t pathSize = 150;
constexpr std::size_t tailSize = 2;

} // namespace

std::vector<std::byte> buildSimoLoadSituationPacket(std::string_view relativePath) {
    std::vector<std::byte> packet(head.size() + pathSize + tailSize);
    const auto toByte = [](char c) { return static_cast<std::byte>(c); };
    const auto path = std::ranges::transform(head, packet.begin(), toByte).out;
    std::ranges::transform(relativePath.substr(0, pathSize), path, toByte);
    return packet;
}

} // namespace tarnly
