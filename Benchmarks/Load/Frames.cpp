#include "Frames.hpp"

#include <array>
#include <stdexcept>

namespace tarnly::load {
namespace {

constexpr std::size_t shortLimit = 126, mediumLimit = 65'536;

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

void appendBigEndian(std::string& out, std::uint64_t number, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        out += static_cast<char>(number >> shift & 0xFF);
}

void rule(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

} // namespace

std::string encodeFrame(Opcode opcode, std::string_view payload) {
    constexpr std::array<char, 4> key{0x37, 0x2A, 0x5C, 0x11};
    std::string out;
    out.reserve(payload.size() + 14);
    out += static_cast<char>(0x80 | static_cast<int>(opcode));
    if (payload.size() < shortLimit) {
        out += static_cast<char>(0x80 | payload.size());
    } else if (payload.size() < mediumLimit) {
        out += static_cast<char>(0x80 | 126);
        appendBigEndian(out, payload.size(), 2);
    } else {
        out += static_cast<char>(0x80 | 127);
        appendBigEndian(out, payload.size(), 8);
    }
    out.append(key.data(), key.size());
    for (std::size_t i = 0; i < payload.size(); ++i)
        out += static_cast<char>(payload[i] ^ key[i % 4]);
    return out;
}

void FrameReader::append(std::span<const char> bytes) {
    if (begin_ == bytes_.size()) {
        bytes_.clear();
        begin_ = 0;
    }
    bytes_.append(bytes.data(), bytes.size());
}

std::optional<FrameReader::Frame> FrameReader::next() {
    const auto rest = std::string_view(bytes_).substr(begin_);
    if (rest.size() < 2) return std::nullopt;
    const auto first = static_cast<unsigned char>(rest[0]), second = static_cast<unsigned char>(rest[1]);
    rule((first & 0x70) == 0, "a reserved bit is set");
    rule((second & 0x80) == 0, "a server's frame is masked");
    std::size_t header = 2, size = second;
    if (second >= shortLimit) {
        header = second == 126 ? 4 : 10;
        if (rest.size() < header) return std::nullopt;
        size = bigEndian(rest.substr(2, header - 2));
        rule(size >= (second == 126 ? shortLimit : mediumLimit), "a length is longer than need be");
    }
    if (rest.size() - header < size) return std::nullopt;
    begin_ += header + size;
    return Frame{static_cast<Opcode>(first & 0x0F), (first & 0x80) != 0, rest.substr(header, size)};
}

} // namespace tarnly::load
