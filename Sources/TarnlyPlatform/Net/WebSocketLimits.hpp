#pragma once

#include <chrono>
#include <cstddef>

#include "TarnlyPlatform/Base/ByteBudget.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"

namespace tarnly {

/// What a WebSocket allows its peer.
struct WebSocketLimits {
    /// For the opening handshake.
    Clock::Duration handshake = std::chrono::seconds(10);
    /// How long a peer may take nothing of what is sent to it, or send nothing of a long message that it has
    /// begun, before it is cut.
    Clock::Duration stall = std::chrono::seconds(15);
    /// Of a long message, beyond that time: what a connection that is used for lessons does easily.
    std::size_t leastBytesASecond = std::size_t{64} * 1024;
    /// How long the end waits for what was sent and for the peer's close.
    Clock::Duration close = std::chrono::milliseconds(500);
    /// Unsolicited bytes that a peer may owe before the next such message has it cut.
    std::size_t backlog = std::size_t{8} * 1024 * 1024;
    /// Of an incoming message, to begin with.
    std::size_t message = std::size_t{64} * 1024 * 1024;
    /// How far is read ahead while a message is being dealt with: pings and the peer's end are seen that far.
    std::size_t readAheadMessages = 64;
    std::size_t readAheadBytes = std::size_t{256} * 1024;
    /// The same for a stranger, whose messages come in small pieces.
    std::size_t strangerReadAheadBytes = std::size_t{16} * 1024;
    /// While more than that of the answers waits to be sent, no further message is dealt with.
    std::size_t unsentAnswers = std::size_t{64} * 1024;
    /// Where incoming messages of more than `shortMessage` bytes take room before they are read; null: there
    /// is no such limit. Outlives the connection.
    ByteBudget* budget = nullptr;
    std::size_t shortMessage = std::size_t{64} * 1024;
};

} // namespace tarnly
