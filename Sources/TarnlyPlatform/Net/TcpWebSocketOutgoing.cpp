#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <span>

#include "TarnlyPlatform/Base/SecureRandom.hpp"
#include "TarnlyPlatform/Net/TcpWebSocket.hpp"

/// The writing half of a connection.
namespace tarnly {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

/// After that many bytes others have their turn.
constexpr std::size_t bytesATurn = 256 * 1024;

} // namespace

void TcpWebSocket::send(std::string text, Kind kind) {
    thread_.check();
    if (!canSend()) return;
    if (kind == Kind::unsolicited && backlog() >= limits_.backlog) {
        return fail(NetworkError::Case::timedOut, "the peer does not read what is sent to it");
    }
    if (isInParts_) {
        heldBytes_ += kind == Kind::unsolicited ? text.size() : 0;
        held_.emplace_back(std::move(text), kind);
    } else {
        put(WebSocketOpcode::text, true, std::move(text), kind == Kind::unsolicited);
    }
}

void TcpWebSocket::sendPart(std::string text, bool isLast) {
    thread_.check();
    if (!canSend()) return;
    const auto opcode =
        std::exchange(isInParts_, !isLast) ? WebSocketOpcode::continuation : WebSocketOpcode::text;
    put(opcode, isLast, std::move(text));
    if (!isLast) return;
    heldBytes_ = 0;
    for (auto& [held, kind] : std::exchange(held_, {}))
        send(std::move(held), kind);
}

void TcpWebSocket::ping() {
    thread_.check();
    const bool isUnderWay = !outgoing_.isEmpty() && outgoing_.written() < pingEndsAt_;
    if (state_ != State::open || isUnderWay) return;
    put(WebSocketOpcode::ping, true, {});
    pingEndsAt_ = outgoing_.queued();
}

void TcpWebSocket::put(WebSocketOpcode opcode, bool isFinal, std::string payload, bool isUnsolicited) {
    const auto mask = newMask();
    const WebSocketFrameHeader header(opcode, isFinal, payload.size(), mask);
    if (mask) applyMask(payload, *mask);
    outgoing_.push(header.bytes(), std::move(payload), isUnsolicited);
    flush();
}

/// Nobody who makes a peer send something shall foresee its bytes (RFC 6455, section 10.3).
std::optional<WebSocketMask> TcpWebSocket::newMask() const {
    if (own_ == WebSocketSide::server) return std::nullopt;
    WebSocketMask mask;
    fillSecureRandom(std::as_writable_bytes(std::span(mask)));
    return mask;
}

void TcpWebSocket::flush() {
    const bool canWrite = !isWorking_ && !isWaitingToWrite_ && state_ != State::opening && !hasEnded();
    if (!canWrite || outgoing_.isEmpty()) return;
    std::size_t sent = 0;
    while (!outgoing_.isEmpty()) {
        const auto [head, body] = outgoing_.next(bytesATurn - sent);
        const std::array<asio::const_buffer, 2> both{asio::buffer(head), asio::buffer(body)};
        error_code error;
        const auto size =
            body.empty() ? socket_.write_some(asio::buffer(head), error) : socket_.write_some(both, error);
        const bool isFull = error == asio::error::would_block || error == asio::error::try_again;
        if (error && !isFull) return fail(NetworkError::Case::connectionClosed, error.message());
        outgoing_.noteWritten(size);
        sent += size;
        if (isFull || sent == bytesATurn) return writeOn(sent > 0);
    }
    noteDrained();
}

/// The rest goes when the network takes more.
void TcpWebSocket::writeOn(bool isProgress) {
    if (isProgress || !lastProgress_) lastProgress_ = clock_.now();
    if (isProgress) changed_.notifyAll();
    isWaitingToWrite_ = true;
    watchForStalls();
    socket_.async_wait(Socket::wait_write, [self = shared_from_this()](const error_code&) {
        self->isWaitingToWrite_ = false;
        self->signs_.lastTakenAt = self->clock_.now();
        self->guarded([&] {
            self->flush();
            if (!self->isWaitingToWrite_ && !self->hasEnded()) self->work();
        });
    });
}

void TcpWebSocket::noteDrained() {
    lastProgress_.reset();
    changed_.notifyAll();
    if (state_ == State::closing && hasPeerClosed_) return end();
}

Task<> TcpWebSocket::drained() {
    thread_.check();
    const auto self = shared_from_this();
    const auto target = outgoing_.queued();
    while (!outgoing_.isEmpty() && outgoing_.written() < target && !hasEnded()) {
        co_await changed_.wait();
    }
    if (hasEnded()) throwEnded();
}

} // namespace tarnly
