#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Net/WebSocketCodec.hpp"

namespace tarnly::test {

/// A WebSocket frame bit by bit, right or wrong, written without the code that the tests are about.
struct WebSocketFrame {
    static constexpr unsigned continuation = 0x0;
    static constexpr unsigned text = 0x1;
    static constexpr unsigned binary = 0x2;
    static constexpr unsigned close = 0x8;
    static constexpr unsigned ping = 0x9;
    static constexpr unsigned pong = 0xA;

    unsigned opcode = text;
    std::string payload{};
    bool isFinal = true;
    /// The three bits behind the final one, 0 to 7.
    unsigned reserved = 0;
    /// Absent: the frame is not masked.
    std::optional<std::array<unsigned char, 4>> mask = std::array<unsigned char, 4>{0x12, 0xF4, 0x56, 0x78};
    /// In how many bytes beside the second the length stands: 0, 2 or 8. Absent: in as few as can hold it.
    std::optional<int> lengthBytes{};
    /// Said instead of the payload's own length.
    std::optional<std::uint64_t> length{};

    std::string bytes() const {
        const std::uint64_t size = length.value_or(payload.size());
        const int extra = lengthBytes.value_or(size < 126 ? 0 : size < 65536 ? 2 : 8);
        std::string result;
        put(result, (isFinal ? 0x80U : 0U) | reserved << 4 | opcode);
        put(result, (mask ? 0x80U : 0U) | (extra == 0 ? size : extra == 2 ? 126U : 127U));
        for (int shift = 8 * (extra - 1); shift >= 0; shift -= 8) {
            put(result, size >> shift);
        }
        if (!mask) return result + payload;
        for (const auto byte : *mask) {
            put(result, byte);
        }
        for (std::size_t i = 0; i < payload.size(); ++i) {
            put(result, static_cast<unsigned char>(payload[i]) ^ static_cast<unsigned>((*mask)[i % 4]));
        }
        return result;
    }

  private:
    static void put(std::string& bytes, std::uint64_t byte) { bytes += static_cast<char>(byte & 0xFF); }
};

/// What one direction of a WebSocket said, the pieces of each text put together.
struct WebSocketLog {
    struct Entry {
        WebSocketEvent::Kind kind;
        /// The whole text of a `textEnd`.
        std::string bytes{};
        WebSocketCloseCode code = WebSocketCloseCode::none;

        bool operator==(const Entry&) const = default;
    };

    std::vector<Entry> entries;
    /// The text under way.
    std::string begun;

    bool operator==(const WebSocketLog&) const = default;

    void add(const WebSocketEvent& event) {
        using Kind = WebSocketEvent::Kind;
        if (event.kind == Kind::textPiece) {
            begun += event.bytes;
        } else if (event.kind == Kind::textEnd) {
            entries.push_back({event.kind, std::exchange(begun, {})});
        } else {
            entries.push_back({event.kind, std::string(event.bytes), event.code});
        }
    }

    /// Hands `bytes` to `decoder`, in pieces of `pieceSize` that lie in memory of just their size.
    void read(WebSocketDecoder& decoder, std::string_view bytes, std::size_t pieceSize) {
        for (std::size_t at = 0; at < bytes.size(); at += pieceSize) {
            const auto part = bytes.substr(at, pieceSize);
            std::vector<char> piece(part.begin(), part.end());
            std::span<char> input(piece);
            while (const auto event = decoder.next(input)) {
                add(*event);
            }
        }
    }
};

inline WebSocketLog decoded(std::string_view bytes, std::size_t pieceSize = 1 << 20,
                            WebSocketSide own = WebSocketSide::server, std::size_t limit = 1 << 24) {
    WebSocketDecoder decoder(own, limit);
    WebSocketLog log;
    log.read(decoder, bytes, pieceSize);
    return log;
}

inline void PrintTo(const WebSocketLog::Entry& entry, std::ostream* out) {
    static constexpr std::array names{"piece", "text", "binary", "ping", "pong", "close", "violation"};
    *out << names.at(static_cast<std::size_t>(entry.kind)) << '(' << entry.bytes.substr(0, 200) << ", "
         << static_cast<int>(entry.code) << ')';
}

} // namespace tarnly::test
