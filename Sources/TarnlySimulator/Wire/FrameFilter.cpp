#include "TarnlySimulator/Wire/FrameFilter.hpp"

#include <algorithm>

namespace tarnly::simulator {
namespace {

constexpr std::string_view agreement = "HTTP/1.1 101";
constexpr std::string_view endOfHead = "\r\n\r\n";

// Of RFC 6455, section 5.2. A server's frames are not masked.
constexpr std::size_t shortestHeader = 2;
constexpr unsigned lengthOf16Bits = 126;
constexpr unsigned lengthOf64Bits = 127;
constexpr unsigned firstControlOpcode = 8;
constexpr unsigned pong = 10;

unsigned byteAt(std::string_view bytes, std::size_t at) { return static_cast<unsigned char>(bytes[at]); }

std::size_t headerSize(unsigned shortLength) {
    if (shortLength == lengthOf16Bits) return shortestHeader + 2;
    return shortLength == lengthOf64Bits ? shortestHeader + 8 : shortestHeader;
}

std::uint64_t payloadSize(std::string_view header, unsigned shortLength) {
    if (header.size() == shortestHeader) return shortLength;
    std::uint64_t size = 0;
    for (std::size_t at = shortestHeader; at < header.size(); ++at)
        size = size << 8 | byteAt(header, at);
    return size;
}

} // namespace

std::string FrameFilter::pass(std::string_view bytes, Wish wish) {
    held_ += bytes;
    std::string out;
    while (step(out, wish)) {
    }
    held_.erase(0, taken_);
    taken_ = 0;
    return out;
}

bool FrameFilter::step(std::string& out, Wish wish) {
    const std::size_t left = held_.size() - taken_;
    if (left == 0) return false;
    switch (stage_) {
        case Stage::unknown:
            return decide();
        case Stage::plain:
            take(left, &out);
            return true;
        case Stage::head:
            return passHead(out);
        case Stage::header:
            return passHeader(out, wish);
        case Stage::payload:
            return passPayload(out);
        case Stage::stopped:
            take(left, nullptr);
            break;
    }
    return false;
}

bool FrameFilter::decide() {
    if (held_.size() < agreement.size()) return false;
    stage_ = held_.starts_with(agreement) ? Stage::head : Stage::plain;
    return true;
}

bool FrameFilter::passHead(std::string& out) {
    const auto end = held_.find(endOfHead, taken_);
    if (end == std::string::npos) return false;
    take(end + endOfHead.size() - taken_, &out);
    stage_ = Stage::header;
    return true;
}

bool FrameFilter::passHeader(std::string& out, Wish wish) {
    const auto left = std::string_view(held_).substr(taken_);
    if (left.size() < shortestHeader) return false;
    const unsigned opcode = byteAt(left, 0) & 0x0F;
    const unsigned shortLength = byteAt(left, 1) & 0x7F;
    const std::size_t size = headerSize(shortLength);
    if (left.size() < size) return false;
    payloadLeft_ = payloadSize(left.substr(0, size), shortLength);
    isDropped_ = wish.dropsPongs && opcode == pong;
    isHalved_ = wish.stopsMidMessage && opcode < firstControlOpcode && payloadLeft_ > 1;
    if (isHalved_) payloadLeft_ /= 2;
    take(size, isDropped_ ? nullptr : &out);
    if (payloadLeft_ > 0) stage_ = Stage::payload;
    return true;
}

bool FrameFilter::passPayload(std::string& out) {
    const std::uint64_t left = held_.size() - taken_;
    const auto size = static_cast<std::size_t>(std::min(left, payloadLeft_));
    take(size, isDropped_ ? nullptr : &out);
    payloadLeft_ -= size;
    if (payloadLeft_ == 0) stage_ = isHalved_ ? Stage::stopped : Stage::header;
    return true;
}

void FrameFilter::take(std::size_t size, std::string* out) {
    if (out != nullptr) out->append(held_, taken_, size);
    taken_ += size;
}

} // namespace tarnly::simulator
