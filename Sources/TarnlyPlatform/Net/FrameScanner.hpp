#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>

namespace tarnly {

/// Turns the text frames of an incoming WebSocket stream (RFC 6455, section 5.2) into binary ones, in place,
/// and remembers which messages were text.
///
/// The WebSocket library ends the connection on a text message that is not UTF-8; as binary the message gets
/// through, and its malformed bytes can be replaced. Neither the opcode nor the length of a frame is masked,
/// so this costs a look at each frame's header alone. A stream that breaks the protocol is left for the
/// library to refuse.
class FrameScanner {
  public:
    /// Takes the next bytes of the stream, in pieces of any size.
    void scan(std::span<unsigned char> bytes);

    /// Whether the next message whose beginning has been scanned was text; call once a message, in order.
    bool takeIsText();

  private:
    static constexpr std::size_t longestHeader = 14;

    std::size_t headerSize() const;
    std::uint64_t payloadSize() const;
    void noteOpcode(unsigned char& first);

    std::array<unsigned char, longestHeader> header_{};
    std::size_t headerHave_ = 0;
    std::uint64_t payloadLeft_ = 0;
    std::deque<bool> isText_;
};

} // namespace tarnly
