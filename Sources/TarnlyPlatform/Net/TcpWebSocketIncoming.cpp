#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>
#include <span>

#include "TarnlyPlatform/Net/TcpWebSocket.hpp"

/// The reading half of a connection.
namespace tarnly {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

/// What a connection keeps for reading while its peer says little, and while a long frame comes.
constexpr std::size_t shortRead = 2 * 1024;
constexpr std::size_t longRead = 64 * 1024;
constexpr std::size_t strangersRead = 8 * 1024;
/// After that many steps (a message takes some three) others have their turn.
constexpr int stepsATurn = 200;

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

void TcpWebSocket::startReading() {
    if (isReading_ || hasEnded()) return;
    const bool isLong = decoder_.payloadLeft() > shortRead;
    const auto room = !isLong ? shortRead : isStranger() ? strangersRead : longRead;
    if (buffer_.size() != room) buffer_ = std::vector<char>(room);
    isReading_ = true;
    if (!rooms_.empty()) expectMore();
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
    const bool wasHeldUp = !mayReadOn();
    flush();
    if (hasEnded()) return;
    // The answers may just have left, and what waited for that is a message, or the end behind the last one.
    const bool isWaiting = state_ == State::finishing || (state_ == State::open && !incoming_.empty());
    const bool canDeliver = isWaiting && hasReceiver_ && isTakerIdle();
    if (steps == stepsATurn || canDeliver) return workLater();
    if (!mayReadOn()) return;
    if (wasHeldUp || workedOn_ < received_) return workLater();
    startReading();
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
    if (state_ == State::opening || hasEnded() || isAtEnd_) return false;
    if (isWaitingForRoom_ || isWaitingForLimit_) return false;
    if (state_ != State::open) return true; // to see the peer leave
    if (incoming_.empty() && isTakerIdle()) return true;
    const auto bytes = isStranger() ? limits_.strangerReadAheadBytes : limits_.readAheadBytes;
    return incoming_.size() < limits_.readAheadMessages && incomingBytes_ + content_.size() < bytes;
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
            makeCapacity(event.bytes.size());
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
            if (event.code != WebSocketCloseCode::none) peersCode_ = event.code;
            return finish({});
        case violation:
            if (!isListening) return end();
            if (event.code == WebSocketCloseCode::tooBig && isReceiverBusy()) {
                isWaitingForLimit_ = true; // which the answer under way may raise
                return;
            }
            failure_.emplace(NetworkError::Case::connectionClosed, event.code == WebSocketCloseCode::tooBig
                                                                       ? "a message above the limit"
                                                                       : "the peer breaks the protocol");
            return this->close(event.code);
    }
}

/// A string that grows by itself takes up to twice its size; strangers get no more than their message needs.
void TcpWebSocket::makeCapacity(std::size_t more) {
    if (isStranger() && content_.size() + more > content_.capacity())
        content_.reserve(std::max(limits_.shortMessage, content_.size() + more));
}

/// A long message is read on when there is room to decode it.
void TcpWebSocket::takeRoom() {
    const auto announced = decoder_.announcedSize();
    const auto longest = std::max(limits_.shortMessage, wantedRoom_);
    if (limits_.budget == nullptr || announced <= longest) return;
    const auto more = announced - wantedRoom_;
    if (rooms_.empty()) messageBeganAt_ = clock_.now();
    wantedRoom_ = announced;
    if (content_.capacity() < announced && wantedRoom_ == more) content_.reserve(announced);
    isWaitingForRoom_ = true;
    limits_.budget->take(more, [weak = weak_from_this()](ByteBudget::Lease room) {
        const auto self = weak.lock();
        if (!self || self->hasEnded()) return;
        self->guarded([&] { // who lets go of room is not to hear of our trouble
            self->rooms_.push_back(std::move(room));
            self->isWaitingForRoom_ = false;
            if (!self->isWorking_) self->workLater();
        });
    });
    // Who holds room and waits for more may be what others wait for.
    if (isWaitingForRoom_) expectMore();
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
    if (std::exchange(isWaitingForLimit_, false)) decoder_.retry();
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

} // namespace tarnly
