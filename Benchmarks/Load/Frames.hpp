#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnly::load {

enum class Opcode : std::uint8_t { continuation = 0, text = 1, close = 8, ping = 9, pong = 10 };

/// A masked frame, as clients send them.
std::string encodeFrame(Opcode opcode, std::string_view payload);

/// Cuts a server's stream into frames. A frame that breaks the rules (masked, reserved bits set, a length
/// that is longer than need be) throws `std::runtime_error`.
class FrameReader {
  public:
    struct Frame {
        Opcode opcode;
        bool isFinal;
        std::string_view payload; ///< valid until the next `append`
    };

    void append(std::span<const char> bytes);

    /// The next frame that has come whole.
    std::optional<Frame> next();

  private:
    std::string bytes_;
    std::size_t begin_ = 0;
};

} // namespace tarnly::load
