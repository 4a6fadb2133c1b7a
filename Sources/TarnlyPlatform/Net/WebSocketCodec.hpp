#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The framing of WebSocket messages (RFC 6455, sections 5 and 7) for both sides, without sockets: bytes in,
/// events out; messages in, bytes out.
namespace tarnly {

/// Which end of a WebSocket is ours. A client masks what it sends, a server does not.
enum class WebSocketSide { server, client };

/// RFC 6455, section 5.2.
enum class WebSocketOpcode : std::uint8_t {
    continuation = 0x0,
    text = 0x1,
    binary = 0x2,
    close = 0x8,
    ping = 0x9,
    pong = 0xA
};

/// RFC 6455, section 7.4.1.
enum class WebSocketCloseCode : std::uint16_t {
    normal = 1000,
    protocolError = 1002,
    /// Stands for a close frame without a code; never sent.
    none = 1005,
    notUtf8 = 1007,
    tooBig = 1009
};

/// What the incoming bytes say.
struct WebSocketEvent {
    enum class Kind {
        /// The next part of a text message. What binary messages hold is dropped.
        textPiece,
        textEnd,
        binaryEnd,
        ping,
        pong,
        /// The last event, as is a violation: what follows is not looked at.
        close,
        /// The peer breaks the protocol or goes beyond a limit; `code` says which is to be told.
        violation
    };

    Kind kind;
    /// Of a piece, a ping, a pong, or the reason of a close. Valid until the next call.
    std::string_view bytes{};
    WebSocketCloseCode code = WebSocketCloseCode::none;
};

/// Reads the frames of one direction of a WebSocket, in pieces of any size.
///
/// Text is handed on as it came: bytes that are not UTF-8 are no violation there, since whoever reads the
/// message replaces them. Allocates nothing. A plain value.
class WebSocketDecoder {
  public:
    /// `own`: the side that reads. `messageLimit`: in bytes, fragments taken together.
    WebSocketDecoder(WebSocketSide own, std::size_t messageLimit);

    /// Takes bytes off the front of `input`, which are unmasked in place, up to the next event. Absent when
    /// the input has been used up; to be called until then.
    std::optional<WebSocketEvent> next(std::span<char>& input);

    /// Also for the message under way, from its next frame on.
    void setMessageLimit(std::size_t bytes) { messageLimit_ = bytes; }

    /// After a violation of the limit: reads on, as the limit may be another one now. What `next` has left of
    /// the input is still the input.
    void retry() { state_ = State::header; }

    /// How long the message under way is, as far as its frames have announced; 0 between messages.
    std::size_t announcedSize() const { return isInMessage_ ? messageSize_ : 0; }

    /// Bytes that the present frame lacks still.
    std::uint64_t payloadLeft() const { return payloadLeft_; }

  private:
    static constexpr std::size_t longestHeader = 14;
    static constexpr std::size_t longestControl = 125;
    enum class State { header, payload, done };

    bool takeHeader(std::span<char>& input);
    std::optional<WebSocketCloseCode> beginFrame();
    std::span<char> takePayload(std::span<char>& input);
    WebSocketEvent endControlFrame();
    WebSocketEvent endMessage();
    WebSocketEvent closeEvent(std::string_view payload);
    WebSocketEvent violation(WebSocketCloseCode code);

    bool isControl() const { return opcode_ >= 0x8; }
    bool isFinal() const;
    bool isMasked() const;
    std::size_t headerSize() const;

    WebSocketSide own_;
    std::size_t messageLimit_;
    State state_ = State::header;

    // The frame
    std::array<unsigned char, longestHeader> header_{};
    std::size_t headerHave_ = 0;
    std::uint8_t opcode_ = 0;
    std::uint64_t payloadLeft_ = 0;
    std::array<unsigned char, 4> mask_{};
    std::size_t maskOffset_ = 0;
    std::array<char, longestControl> control_{};
    std::size_t controlHave_ = 0;

    // The message
    bool isInMessage_ = false;
    bool isText_ = false;
    std::size_t messageSize_ = 0;
};

using WebSocketMask = std::array<unsigned char, 4>;

/// Masks or unmasks `bytes`, whose first is at `offset` in its frame's payload (RFC 6455, section 5.3).
void applyMask(std::span<char> bytes, const WebSocketMask& mask, std::size_t offset = 0);

/// The first bytes of a frame.
class WebSocketFrameHeader {
  public:
    /// Absent: without a mask, as a server sends. A payload is masked by its owner (`applyMask`).
    WebSocketFrameHeader(WebSocketOpcode opcode, bool isFinal, std::uint64_t payloadSize,
                         const std::optional<WebSocketMask>& mask = std::nullopt);

    std::string_view bytes() const { return {bytes_.data(), size_}; }

  private:
    std::array<char, 14> bytes_{};
    std::size_t size_ = 0;
};

/// What a close frame carries.
std::string closePayload(WebSocketCloseCode code);

} // namespace tarnly
