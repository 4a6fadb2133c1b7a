#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/ByteBudget.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Admission.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {

/// One WebSocket, of either side, as an ordered stream of messages.
///
/// Fragments are joined. Pings are answered and the peer's end is noticed also while nobody receives: some
/// messages are read ahead for that (`WebSocketLimits`). What the peer has sent before it closed, or shut
/// down its side, is received still; when its connection broke, nothing is. Belongs to the network thread.
class WebSocketConnection {
  public:
    enum class Opcode { text, binary };

    struct Message {
        Opcode opcode;
        /// Of a text message, as it came: bytes that are not UTF-8 are no error here (see `wellFormedUtf8`).
        /// Empty for a binary message, whose content nobody here reads.
        std::string content;
        /// Of a long message: its share of the bytes that may be decoded at once, until it has been dealt
        /// with.
        std::vector<ByteBudget::Lease> room{};
    };

    /// Who is handed the messages of a connection as they come, without a coroutine.
    class Receiver {
      public:
        virtual ~Receiver() = default;

        /// Says whether the next one may come; if not, it comes after `WebSocketConnection::resume`. May
        /// send, and end the connection.
        virtual bool onMessage(Message message) = 0;

        /// The peer has hung up, or at least shut down its side: it may still read what it has asked for, but
        /// nothing that takes long is worth the while. Not called from within a call of the receiver's own.
        virtual void onHangUp() {}

        /// The connection has ended, and no more messages come. Not called from within a call of the
        /// receiver's own.
        virtual void onEnd() = 0;
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
        /// When it last took what had waited for it to read on; now, while something waits.
        std::optional<Clock::TimePoint> lastTakenAt;
    };

    virtual ~WebSocketConnection() = default;

    /// Returns when the opening handshake is done. Throws `NetworkError` when the connection ended first.
    virtual Task<> opened() = 0;

    /// Sends a ping and does not wait for it; does nothing while one is being sent, and before the handshake.
    virtual void ping() = 0;

    virtual SignsOfLife signsOfLife() const = 0;

    /// The next message, or absent once the connection has ended. One call at a time, and none where there is
    /// a receiver.
    virtual Task<std::optional<Message>> receive() = 0;

    /// From now on all messages go to `receiver`.
    virtual void setReceiver(std::weak_ptr<Receiver> receiver) = 0;

    /// The receiver takes the next message.
    virtual void resume() = 0;

    /// Sends one text message: at once, as far as the network takes it and nothing waits before it. What
    /// waits is sent in order; what is left when the connection ends is lost.
    virtual void send(std::string text, Kind kind) = 0;

    /// Sends one text message of kind `awaited` in several parts. What is sent otherwise, between the first
    /// and the last, follows them.
    virtual void sendPart(std::string text, bool isLast) = 0;

    /// Returns when all that was sent before has been handed to the network.
    /// Throws `NetworkError` when the connection ended first.
    virtual Task<> drained() = 0;

    /// Bytes of unsolicited messages that wait in the outgoing queue.
    virtual std::size_t backlog() const = 0;

    /// A longer incoming message ends the connection; while the receiver is busy, it waits for the limit that
    /// holds when the receiver goes on.
    virtual void setMessageLimit(std::size_t bytes) = 0;

    /// Ends the connection: what was sent before goes out first, as far as the peer takes it within a moment.
    virtual void cancel() = 0;

    /// Ends the connection at once, without a word.
    virtual void abort() = 0;

    /// The peer's stay at the port that accepted it; null where nobody keeps count.
    virtual std::shared_ptr<Visit> visit() const = 0;

    /// Why the connection ended; absent while it lives and after an orderly close.
    virtual std::optional<NetworkError> failure() const = 0;
};

} // namespace tarnly
