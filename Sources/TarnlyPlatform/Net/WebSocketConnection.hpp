#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {

/// One WebSocket, of either side, as an ordered stream of messages.
///
/// Fragments are joined. Pings are answered and the peer's close is noticed also while nobody receives: up to
/// one chunk of the next message is read ahead for that, but nothing behind a message that waits to be
/// received. Belongs to the network thread.
class WebSocketConnection {
  public:
    enum class Opcode { text, binary };

    struct Message {
        Opcode opcode;
        /// Of a text message, as it came: bytes that are not UTF-8 are no error here (see `wellFormedUtf8`).
        /// Empty for a binary message, whose content nobody here reads.
        std::string content;
    };

    /// What the peer waits for, an answer or a request to it, may be of any size; an unsolicited message
    /// counts against a peer that does not read.
    enum class Kind { awaited, unsolicited };

    /// What the peer has shown of itself so far.
    struct SignsOfLife {
        /// Absent before the first byte after the handshake.
        std::optional<Clock::TimePoint> lastByteAt;
        /// How many pings it has answered, and when the last answer came.
        std::uint64_t pongs = 0;
        std::optional<Clock::TimePoint> lastPongAt;
    };

    virtual ~WebSocketConnection() = default;

    /// Returns when the opening handshake is done. Throws `NetworkError` when the connection ended first.
    virtual Task<> opened() = 0;

    /// Sends a ping and does not wait for it; does nothing while one is being sent, and before the handshake.
    virtual void ping() = 0;

    virtual SignsOfLife signsOfLife() const = 0;

    /// The next message, or absent once the connection has ended. One call at a time.
    virtual Task<std::optional<Message>> receive() = 0;

    /// Puts one text message in the outgoing queue and returns. The queue is sent in order; what is left in
    /// it when the connection ends is lost.
    virtual void send(std::string text, Kind kind) = 0;

    /// Returns when all that was sent before has been handed to the network.
    /// Throws `NetworkError` when the connection ended first.
    virtual Task<> drained() = 0;

    /// Bytes of unsolicited messages that wait in the outgoing queue.
    virtual std::size_t backlog() const = 0;

    /// A longer incoming message ends the connection.
    virtual void setMessageLimit(std::size_t bytes) = 0;

    /// Ends the connection: what was sent before goes out first, as far as the peer takes it within a moment.
    virtual void cancel() = 0;

    /// Why the connection ended; absent while it lives and after an orderly close.
    virtual std::optional<NetworkError> failure() const = 0;
};

} // namespace tarnly
