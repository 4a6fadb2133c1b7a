#include "TarnlyPlatform/Net/WebSocketCodec.hpp"

#include <algorithm>
#include <cstring>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr unsigned char finalBit = 0x80;
constexpr unsigned char reservedBits = 0x70;
constexpr unsigned char opcodeBits = 0x0F;
constexpr unsigned char maskBit = 0x80;
constexpr unsigned char lengthBits = 0x7F;
/// In place of a length: that it follows in 2 or 8 bytes.
constexpr unsigned char lengthIn2 = 126;
constexpr unsigned char lengthIn8 = 127;
constexpr std::uint64_t longestLength = 0x7FFF'FFFF'FFFF'FFFF;

std::size_t extendedLengthSize(unsigned char second) {
    const auto length = second & lengthBits;
    return length == lengthIn8 ? 8 : length == lengthIn2 ? 2 : 0;
}

std::uint64_t readBigEndian(std::span<const unsigned char> bytes) {
    std::uint64_t value = 0;
    for (const auto byte : bytes)
        value = value << 8 | byte;
    return value;
}

bool isKnown(unsigned opcode) { return opcode <= 0x2 || (opcode >= 0x8 && opcode <= 0xA); }

/// Whether a peer may send that code: RFC 6455, section 7.4, and IANA's registry of its successors.
bool isSendable(unsigned code) {
    constexpr unsigned firstFree = 3000;
    constexpr unsigned end = 5000;
    if (code >= firstFree && code < end) return true;
    return (code >= 1000 && code <= 1003) || (code >= 1007 && code <= 1014);
}

} // namespace

WebSocketDecoder::WebSocketDecoder(WebSocketSide own, std::size_t messageLimit)
    : own_(own), messageLimit_(messageLimit) {}

std::optional<WebSocketEvent> WebSocketDecoder::next(std::span<char>& input) {
    while (state_ != State::done) {
        if (state_ == State::header) {
            if (!takeHeader(input)) return std::nullopt;
            if (const auto broken = beginFrame()) return violation(*broken);
            headerHave_ = 0;
            state_ = State::payload;
        }
        if (payloadLeft_ > 0) {
            const auto piece = takePayload(input);
            if (piece.empty()) return std::nullopt;
            if (!isControl() && isText_) {
                return WebSocketEvent{WebSocketEvent::Kind::textPiece, {piece.data(), piece.size()}};
            }
            continue;
        }
        state_ = State::header;
        if (isControl()) return endControlFrame();
        if (isFinal()) return endMessage();
    }
    input = {};
    return std::nullopt;
}

bool WebSocketDecoder::takeHeader(std::span<char>& input) {
    while (headerHave_ < 2 || headerHave_ < headerSize()) {
        if (input.empty()) return false;
        header_[headerHave_++] = static_cast<unsigned char>(input.front());
        input = input.subspan(1);
    }
    return true;
}

/// The code of what is wrong with the frame.
std::optional<WebSocketCloseCode> WebSocketDecoder::beginFrame() {
    using enum WebSocketCloseCode;
    const auto extended = extendedLengthSize(header_[1]);
    const std::uint64_t shortLength = header_[1] & lengthBits;
    const auto length = extended == 0 ? shortLength : readBigEndian({&header_[2], extended});
    const bool isWasteful = (extended == 2 && length < lengthIn2) || (extended == 8 && length <= 0xFFFF);
    opcode_ = header_[0] & opcodeBits;
    if ((header_[0] & reservedBits) != 0 || !isKnown(opcode_)) return protocolError;
    if (isMasked() != (own_ == WebSocketSide::server)) return protocolError;
    if (isWasteful || length > longestLength) return protocolError;

    payloadLeft_ = length;
    maskOffset_ = 0;
    if (isMasked()) std::copy_n(&header_[2 + extended], mask_.size(), mask_.begin());
    if (isControl()) {
        controlHave_ = 0;
        const bool isSound = isFinal() && length <= longestControl;
        return isSound ? std::nullopt : std::optional(protocolError);
    }
    const bool isContinuation = opcode_ == static_cast<std::uint8_t>(WebSocketOpcode::continuation);
    if (isContinuation != isInMessage_) return protocolError;
    const auto sizeBefore = isContinuation ? messageSize_ : 0;
    if (sizeBefore > messageLimit_ || length > messageLimit_ - sizeBefore) return tooBig;
    if (!isContinuation) {
        isInMessage_ = true;
        isText_ = opcode_ == static_cast<std::uint8_t>(WebSocketOpcode::text);
        messageSize_ = 0;
    }
    messageSize_ += static_cast<std::size_t>(length);
    return std::nullopt;
}

std::span<char> WebSocketDecoder::takePayload(std::span<char>& input) {
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(payloadLeft_, input.size()));
    const auto piece = input.first(size);
    input = input.subspan(size);
    payloadLeft_ -= size;
    if (isMasked()) applyMask(piece, mask_, maskOffset_);
    maskOffset_ = (maskOffset_ + size) % mask_.size();
    if (isControl()) {
        std::ranges::copy(piece, control_.begin() + static_cast<std::ptrdiff_t>(controlHave_));
        controlHave_ += size;
    }
    return piece;
}

WebSocketEvent WebSocketDecoder::endControlFrame() {
    using Kind = WebSocketEvent::Kind;
    const std::string_view payload(control_.data(), controlHave_);
    if (opcode_ == static_cast<std::uint8_t>(WebSocketOpcode::close)) return closeEvent(payload);
    const bool isPing = opcode_ == static_cast<std::uint8_t>(WebSocketOpcode::ping);
    return {isPing ? Kind::ping : Kind::pong, payload};
}

WebSocketEvent WebSocketDecoder::endMessage() {
    isInMessage_ = false;
    return {isText_ ? WebSocketEvent::Kind::textEnd : WebSocketEvent::Kind::binaryEnd};
}

WebSocketEvent WebSocketDecoder::closeEvent(std::string_view payload) {
    constexpr std::size_t codeSize = 2;
    if (payload.size() == 1) return violation(WebSocketCloseCode::protocolError);
    auto code = WebSocketCloseCode::none;
    if (payload.size() >= codeSize) {
        const auto number =
            static_cast<unsigned char>(payload[0]) << 8 | static_cast<unsigned char>(payload[1]);
        if (!isSendable(static_cast<unsigned>(number))) return violation(WebSocketCloseCode::protocolError);
        code = static_cast<WebSocketCloseCode>(number);
        payload.remove_prefix(codeSize);
    }
    if (!isWellFormedUtf8(payload)) return violation(WebSocketCloseCode::notUtf8);
    state_ = State::done;
    return {WebSocketEvent::Kind::close, payload, code};
}

WebSocketEvent WebSocketDecoder::violation(WebSocketCloseCode code) {
    state_ = State::done;
    return {WebSocketEvent::Kind::violation, {}, code};
}

bool WebSocketDecoder::isFinal() const { return (header_[0] & finalBit) != 0; }

bool WebSocketDecoder::isMasked() const { return (header_[1] & maskBit) != 0; }

std::size_t WebSocketDecoder::headerSize() const {
    return 2 + extendedLengthSize(header_[1]) + (isMasked() ? mask_.size() : 0);
}

void applyMask(std::span<char> bytes, const WebSocketMask& mask, std::size_t offset) {
    std::array<unsigned char, sizeof(std::uint64_t)> repeated{};
    for (std::size_t i = 0; i < repeated.size(); ++i)
        repeated[i] = mask[(offset + i) % mask.size()];
    std::uint64_t key = 0;
    std::memcpy(&key, repeated.data(), sizeof key);
    auto* at = bytes.data();
    auto left = bytes.size();
    for (; left >= sizeof key; at += sizeof key, left -= sizeof key) {
        std::uint64_t word = 0;
        std::memcpy(&word, at, sizeof word);
        word ^= key;
        std::memcpy(at, &word, sizeof word);
    }
    for (std::size_t i = 0; i < left; ++i)
        at[i] = static_cast<char>(static_cast<unsigned char>(at[i]) ^ repeated[i]);
}

WebSocketFrameHeader::WebSocketFrameHeader(WebSocketOpcode opcode, bool isFinal, std::uint64_t payloadSize,
                                           const std::optional<WebSocketMask>& mask) {
    const auto put = [this](std::uint64_t byte) { bytes_[size_++] = static_cast<char>(byte & 0xFF); };
    put(static_cast<std::uint64_t>(opcode) | (isFinal ? finalBit : 0U));
    const std::uint64_t masked = mask ? maskBit : 0U;
    std::size_t extended = 0;
    if (payloadSize < lengthIn2) {
        put(masked | payloadSize);
    } else {
        extended = payloadSize <= 0xFFFF ? 2 : 8;
        put(masked | (extended == 2 ? lengthIn2 : lengthIn8));
    }
    for (auto i = extended; i > 0; --i)
        put(payloadSize >> (8 * (i - 1)));
    if (mask) {
        for (const auto byte : *mask)
            put(byte);
    }
}

std::string closePayload(WebSocketCloseCode code) {
    const auto number = static_cast<unsigned>(code);
    return {static_cast<char>(number >> 8), static_cast<char>(number & 0xFF)};
}

} // namespace tarnly
