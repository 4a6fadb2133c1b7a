#include "TarnlyPlatform/Net/TcpWebSocket.hpp"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>
#include <span>

#include "TarnlyPlatform/Base/SecureRandom.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

/// What a connection keeps for reading while its peer says little, and while a long frame comes.
constexpr std::size_t shortRead = 2 * 1024;
constexpr std::size_t longRead = 64 * 1024;
/// After that many steps (a message takes some three), or that many bytes written, others have their turn.
constexpr int stepsATurn = 200;
constexpr std::size_t bytesATurn = 256 * 1024;

/// Stands for as long as somebody receives; one who is told to end receives no more.
class Wish {
  public:
    explicit Wish(bool& isWanted) : isWanted_(isWanted) { isWanted_ = true; }
    Wish(const Wish&) = delete;
    Wish& operator=(const Wish&) = delete;
    ~Wish() { isWanted_ = false; }

  private:
    bool& isWanted_;
};

} // namespace

TcpWebSocket::TcpWebSocket(Socket socket, WebSocketSide own, Clock& clock, const WebSocketLimits& limits)
    : clock_(clock),
      limits_(limits),
      own_(own),
      socket_(std::move(socket)),
      decoder_(own, limits.message),
      changed_(socket_.get_executor()),
      tasks_(socket_.get_executor()),
      opening_(socket_.get_executor()) {}

void TcpWebSocket::open(std::string received) {
    thread_.check();
    if (hasEnded()) return;
    state_ = State::open;
    opening_.cancel();
    error_code ignored;
    socket_.non_blocking(true, ignored);
    changed_.notifyAll();
    flush();
    if (received.empty()) return startReading();
    buffer_.assign(received.begin(), received.end());
    received_ = buffer_.size();
    signs_.lastByteAt = clock_.now();
    workLater(); // whoever opened the connection has it in hand then
}

void TcpWebSocket::guarded(const auto& step) {
    try {
        step();
    } catch (const std::exception&) {
        fail(NetworkError::Case::connectionClosed, "the connection broke down");
    }
}

// Incoming

void TcpWebSocket::startReading() {
    if (isReading_ || hasEnded()) return;
    const auto room = decoder_.payloadLeft() > shortRead ? longRead : shortRead;
    if (buffer_.size() != room) buffer_ = std::vector<char>(room);
    isReading_ = true;
    if (!rooms_.empty()) watchForStalls();
    socket_.async_read_some(asio::buffer(buffer_),
                            [self = shared_from_this()](const error_code& error, std::size_t size) {
                                self->guarded([&] { self->noteRead(error, size); });
                            });
}

void TcpWebSocket::noteRead(const error_code& error, std::size_t size) {
    isReading_ = false;
    if (hasEnded()) return;
    if (error == asio::error::eof) return finish(error);
    if (error) return fail(NetworkError::Case::connectionClosed, error.message());
    signs_.lastByteAt = clock_.now();
    workedOn_ = 0;
    received_ = size;
    work();
}

/// Does what can be done with what has been read; what is sent meanwhile leaves in one write.
void TcpWebSocket::work() {
    if (std::exchange(isWorking_, true)) return;
    int steps = 0;
    while (steps < stepsATurn && workOnce())
        ++steps;
    isWorking_ = false;
    flush();
    if (hasEnded()) return;
    // The answers may just have left, and what waited for that is a message, or the end behind the last one.
    const bool isWaiting = !incoming_.empty() || state_ == State::finishing;
    const bool canDeliver = isWaiting && hasReceiver_ && isTakerIdle();
    if (steps == stepsATurn || canDeliver) return workLater();
    if (mayReadOn() && workedOn_ == received_) startReading();
}

/// One step: a message handed on, or an event read. False when there is nothing to do.
bool TcpWebSocket::workOnce() {
    const auto waiting = incoming_.size();
    deliver();
    if (incoming_.size() < waiting) return true;
    if (!mayReadOn()) return false;
    std::span<char> input(buffer_.data() + workedOn_, received_ - workedOn_);
    const auto event = decoder_.next(input);
    workedOn_ = received_ - input.size();
    if (event) note(*event);
    return event.has_value() && !hasEnded();
}

bool TcpWebSocket::mayReadOn() const {
    if (state_ == State::opening || hasEnded() || isAtEnd_ || isWaitingForRoom_) return false;
    if (state_ != State::open) return true; // to see the peer leave
    if (incoming_.empty() && isTakerIdle()) return true;
    return incoming_.size() < limits_.readAheadMessages &&
           incomingBytes_ + content_.size() < limits_.readAheadBytes;
}

bool TcpWebSocket::isTakerIdle() const {
    if (!hasReceiver_) return isWanted_;
    return isReceiverReady_ && outgoing_.size() <= limits_.unsentAnswers;
}

void TcpWebSocket::note(const WebSocketEvent& event) {
    using enum WebSocketEvent::Kind;
    const bool isListening = state_ == State::open;
    switch (event.kind) {
        case textPiece:
            if (!isListening) return;
            takeRoom();
            content_ += event.bytes;
            return;
        case textEnd:
            if (isListening) noteMessage(Opcode::text);
            return;
        case binaryEnd:
            if (isListening) noteMessage(Opcode::binary);
            return;
        case ping: {
            if (!isListening) return;
            std::string payload(event.bytes);
            const auto mask = newMask();
            if (mask) applyMask(payload, *mask);
            const WebSocketFrameHeader header(WebSocketOpcode::pong, true, payload.size(), mask);
            outgoing_.pushUrgent(std::string(header.bytes()) + payload);
            return;
        }
        case pong:
            ++signs_.pongs;
            signs_.lastPongAt = clock_.now();
            return;
        case close:
            hasPeerClosed_ = true;
            if (event.code != WebSocketCloseCode::none) peersCode_ = event.code;
            return finish({});
        case violation:
            if (!isListening) return end();
            failure_.emplace(NetworkError::Case::connectionClosed, event.code == WebSocketCloseCode::tooBig
                                                                       ? "a message above the limit"
                                                                       : "the peer breaks the protocol");
            return this->close(event.code);
    }
}

/// A long message is read on when there is room to decode it.
void TcpWebSocket::takeRoom() {
    const auto announced = decoder_.announcedSize();
    const auto longest = std::max(limits_.shortMessage, wantedRoom_);
    if (limits_.budget == nullptr || announced <= longest) return;
    const auto more = announced - wantedRoom_;
    wantedRoom_ = announced;
    if (content_.capacity() < announced && wantedRoom_ == more) content_.reserve(announced);
    isWaitingForRoom_ = true;
    limits_.budget->take(more, [weak = weak_from_this()](ByteBudget::Lease room) {
        const auto self = weak.lock();
        if (!self || self->hasEnded()) return;
        self->rooms_.push_back(std::move(room));
        self->isWaitingForRoom_ = false;
        if (!self->isWorking_) self->workLater();
    });
}

void TcpWebSocket::noteMessage(Opcode opcode) {
    Message message{opcode, std::exchange(content_, {}), std::exchange(rooms_, {})};
    wantedRoom_ = 0;
    incomingBytes_ += message.content.size();
    incoming_.push_back(std::move(message));
    if (!hasReceiver_) changed_.notifyAll();
}

Task<std::optional<WebSocketConnection::Message>> TcpWebSocket::receive() {
    thread_.check();
    const auto self = shared_from_this();
    const Wish wish(isWanted_);
    work();
    while (incoming_.empty() && !hasEnded()) {
        co_await changed_.wait();
    }
    if (incoming_.empty()) co_return std::nullopt;
    auto message = std::move(incoming_.front());
    incoming_.pop_front();
    incomingBytes_ -= message.content.size();
    co_return message;
}

void TcpWebSocket::setReceiver(std::weak_ptr<Receiver> receiver) {
    thread_.check();
    receiver_ = std::move(receiver);
    hasReceiver_ = true;
    isReceiverReady_ = true;
    workLater();
}

void TcpWebSocket::resume() {
    thread_.check();
    isReceiverReady_ = true;
    if (state_ != State::opening && !hasEnded()) guarded([this] { work(); });
}

void TcpWebSocket::deliver() {
    const bool isServing = state_ == State::open || state_ == State::finishing;
    if (isServing && hasReceiver_ && isTakerIdle() && !incoming_.empty()) {
        auto message = std::move(incoming_.front());
        incoming_.pop_front();
        incomingBytes_ -= message.content.size();
        const auto receiver = receiver_.lock();
        isReceiverReady_ = false; // it may resume before it returns
        if (receiver && receiver->onMessage(std::move(message))) isReceiverReady_ = true;
    }
    // A client awaits nothing that it would have to answer first.
    const bool isAnswered = incoming_.empty() && (!hasReceiver_ || isTakerIdle());
    if (state_ == State::finishing && isAnswered) close(peersCode_);
}

void TcpWebSocket::workLater() {
    if (std::exchange(isWorkPosted_, true)) return;
    asio::post(socket_.get_executor(), [self = shared_from_this()] {
        self->isWorkPosted_ = false;
        if (!self->hasEnded()) self->guarded([&] { self->work(); });
    });
}

// Outgoing

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
    if (isProgress || !isStallWatched_) lastProgress_ = clock_.now();
    if (isProgress) changed_.notifyAll();
    isWaitingToWrite_ = true;
    watchForStalls();
    socket_.async_wait(Socket::wait_write, [self = shared_from_this()](const error_code&) {
        self->isWaitingToWrite_ = false;
        self->guarded([&] {
            self->flush();
            if (!self->isWaitingToWrite_ && !self->hasEnded()) self->work();
        });
    });
}

void TcpWebSocket::noteDrained() {
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

Task<> TcpWebSocket::opened() {
    thread_.check();
    const auto self = shared_from_this();
    while (state_ == State::opening) {
        co_await changed_.wait();
    }
    if (hasEnded()) throwEnded();
}

// The limits of time

void TcpWebSocket::watchForStalls() {
    if (isReading_) readingSince_ = clock_.now();
    if (std::exchange(isStallWatched_, true)) return;
    tasks_.spawn(watch(shared_from_this()), endOnFailure());
}

/// When the peer will have done nothing for too long; absent while nothing is expected of it.
std::optional<Clock::TimePoint> TcpWebSocket::stallsAt() const {
    std::optional<Clock::TimePoint> since;
    if (isReading_ && !rooms_.empty()) since = readingSince_;
    if (isWaitingToWrite_) since = since ? std::min(*since, lastProgress_) : lastProgress_;
    if (since) *since += limits_.stall;
    return since;
}

/// One timer for as long as there is traffic, instead of one a message.
Task<> TcpWebSocket::watch(std::shared_ptr<TcpWebSocket> self) {
    auto deadline = self->stallsAt();
    while (deadline && !self->hasEnded()) {
        const auto left = *deadline - self->clock_.now();
        if (left <= Clock::Duration::zero()) {
            const char* what = self->isWaitingToWrite_ ? "the peer takes nothing of what is sent to it"
                                                       : "the peer does not finish its message";
            co_return self->fail(NetworkError::Case::timedOut, what);
        }
        co_await self->clock_.sleepFor(left);
        deadline = self->stallsAt();
    }
    self->isStallWatched_ = false;
}

Task<> TcpWebSocket::endAfterPatience(std::shared_ptr<TcpWebSocket> self) {
    co_await self->clock_.sleepFor(self->limits_.close);
    self->end();
}

TaskGroup::OnFailure TcpWebSocket::endOnFailure() {
    return [weak = weak_from_this()](const std::exception_ptr&) {
        const auto self = weak.lock();
        if (self) self->fail(NetworkError::Case::connectionClosed, "the connection broke down");
    };
}

// The end

void TcpWebSocket::cancel() {
    thread_.check();
    close(WebSocketCloseCode::normal);
}

/// The peer says no more. What it has asked is answered first.
void TcpWebSocket::finish(const error_code& error) {
    if (error) isAtEnd_ = true;
    if (state_ == State::closing) return end();
    hasPeerClosed_ = true;
    if (state_ == State::open && error)
        lastWord_.emplace(NetworkError::Case::connectionClosed, error.message());
    state_ = State::finishing;
    changed_.notifyAll();
    work();
}

void TcpWebSocket::close(WebSocketCloseCode code) {
    if (state_ == State::closing || hasEnded()) return;
    if (state_ == State::opening) return end();
    if (lastWord_) failure_ = lastWord_;
    state_ = State::closing;
    put(WebSocketOpcode::close, true, closePayload(code));
    if (!hasEnded()) tasks_.spawn(endAfterPatience(shared_from_this()), endOnFailure());
}

void TcpWebSocket::fail(NetworkError::Case which, const std::string& detail) {
    if (hasEnded()) return;
    if (state_ != State::closing) failure_.emplace(which, detail);
    end();
}

void TcpWebSocket::end() {
    if (hasEnded()) return;
    state_ = State::ended;
    error_code ignored;
    socket_.close(ignored);
    tasks_.cancel();
    opening_.cancel();
    changed_.notifyAll();
    rooms_.clear();
    if (!hasReceiver_) return;
    incoming_.clear();
    asio::post(socket_.get_executor(), [receiver = receiver_] {
        if (const auto present = receiver.lock()) present->onEnd();
    });
}

void TcpWebSocket::throwEnded() const {
    if (failure_) throw NetworkError(*failure_);
    throw NetworkError(NetworkError::Case::connectionClosed, "the connection has been closed");
}

} // namespace tarnly
