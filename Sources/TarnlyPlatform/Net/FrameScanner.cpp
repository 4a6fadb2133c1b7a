#include "TarnlyPlatform/Net/FrameScanner.hpp"

#include <algorithm>

namespace tarnly {
namespace {

constexpr unsigned char opcodeBits = 0x0F;
constexpr unsigned char textOpcode = 0x1;
constexpr unsigned char binaryOpcode = 0x2;
constexpr unsigned char maskBit = 0x80;
constexpr unsigned char lengthBits = 0x7F;
constexpr std::size_t maskSize = 4;

/// Bytes of extended length behind the two that every header has.
std::size_t extendedLengthSize(unsigned char second) {
    switch (second & lengthBits) {
        case 126:
            return 2;
        case 127:
            return 8;
        default:
            return 0;
    }
}

} // namespace

void FrameScanner::scan(std::span<unsigned char> bytes) {
    while (!bytes.empty()) {
        if (payloadLeft_ > 0) {
            const auto skipped = std::min<std::uint64_t>(payloadLeft_, bytes.size());
            payloadLeft_ -= skipped;
            bytes = bytes.subspan(static_cast<std::size_t>(skipped));
            continue;
        }
        if (headerHave_ == 0) noteOpcode(bytes.front());
        header_[headerHave_++] = bytes.front();
        bytes = bytes.subspan(1);
        if (headerHave_ < 2 || headerHave_ < headerSize()) continue;
        payloadLeft_ = payloadSize();
        headerHave_ = 0;
    }
}

bool FrameScanner::takeIsText() {
    if (isText_.empty()) return false;
    const bool isText = isText_.front();
    isText_.pop_front();
    return isText;
}

std::size_t FrameScanner::headerSize() const {
    const bool isMasked = (header_[1] & maskBit) != 0;
    return 2 + extendedLengthSize(header_[1]) + (isMasked ? maskSize : 0);
}

std::uint64_t FrameScanner::payloadSize() const {
    const auto extended = extendedLengthSize(header_[1]);
    if (extended == 0) return header_[1] & lengthBits;
    std::uint64_t size = 0; // big-endian
    for (std::size_t i = 2; i < 2 + extended; ++i)
        size = size << 8 | header_[i];
    return size;
}

void FrameScanner::noteOpcode(unsigned char& first) {
    const auto opcode = first & opcodeBits;
    if (opcode != textOpcode && opcode != binaryOpcode) return; // a continuation or a control frame
    isText_.push_back(opcode == textOpcode);
    first = static_cast<unsigned char>((first & ~opcodeBits) | binaryOpcode);
}

} // namespace tarnly
