#include "TarnlyPlatform/Net/TcpWebSocket.hpp"

#include <algorithm>
#include <boost/asio/post.hpp>

namespace tarnly {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

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

void TcpWebSocket::accompany(std::shared_ptr<Visit> visit) {
    visit_ = std::move(visit);
    if (!visit_) return;
    visit_->setSendAway([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->abort();
    });
}

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

Task<> TcpWebSocket::opened() {
    thread_.check();
    const auto self = shared_from_this();
    while (state_ == State::opening) {
        co_await changed_.wait();
    }
    if (hasEnded()) throwEnded();
}

WebSocketConnection::SignsOfLife TcpWebSocket::signsOfLife() const {
    auto signs = signs_;
    // The limit of stalling is nearer, and what is not read cannot be held against the peer.
    if (isWaitingToWrite_ || !isReading_) signs.lastTakenAt = clock_.now();
    return signs;
}

// The limits of time

void TcpWebSocket::expectMore() {
    expectingSince_ = clock_.now();
    watchForStalls();
}

void TcpWebSocket::watchForStalls() {
    if (std::exchange(isStallWatched_, true)) return;
    tasks_.spawn(watch(shared_from_this()), endOnFailure());
}

/// When the peer will have done nothing for too long; absent while nothing is expected of it.
std::optional<Clock::TimePoint> TcpWebSocket::stallsAt() const {
    std::optional<Clock::TimePoint> since;
    if ((isReading_ || isWaitingForRoom_) && !rooms_.empty()) since = expectingSince_;
    if (isWaitingToWrite_) since = since ? std::min(*since, *lastProgress_) : *lastProgress_;
    if (since) *since += limits_.stall;
    if (isReading_ && !rooms_.empty()) {
        // Who drips bytes must not keep the room of others.
        const std::chrono::seconds earned(content_.size() / limits_.leastBytesASecond);
        const auto due = messageBeganAt_ + 2 * limits_.stall + earned;
        since = since ? std::min(*since, due) : due;
    }
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
    const auto receiver = error ? receiver_.lock() : nullptr;
    if (receiver) receiver->onHangUp();
    hasPeerClosed_ = true;
    if (state_ == State::closing) { // what was sent before goes out first
        if (outgoing_.isEmpty()) end();
        return;
    }
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
    visit_.reset();
    if (!hasReceiver_) return;
    incoming_.clear();
    asio::post(socket_.get_executor(), [receiver = receiver_] {
        if (const auto present = receiver.lock()) present->onEnd();
    });
}

/// Where even the words for it find no memory, the peer's end is what ends the rest.
void TcpWebSocket::breakDown() noexcept {
    try {
        fail(NetworkError::Case::connectionClosed, "the connection broke down");
    } catch (const std::exception&) {
        error_code ignored;
        socket_.close(ignored);
    }
}

void TcpWebSocket::throwEnded() const {
    if (failure_) throw NetworkError(*failure_);
    throw NetworkError(NetworkError::Case::connectionClosed, "the connection has been closed");
}

} // namespace tarnly
