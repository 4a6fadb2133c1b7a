#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/post.hpp>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly::test {

/// A connection whose peer is the test.
class FakeConnection final : public WebSocketConnection {
  public:
    struct Sent {
        std::string text;
        Kind kind;
        bool operator==(const Sent&) const = default;
    };

    explicit FakeConnection(boost::asio::any_io_executor executor)
        : executor_(std::move(executor)), changed_(executor_) {}

    // The peer's side

    std::vector<Sent> sent;
    std::vector<std::pair<std::string, bool>> parts;
    std::size_t backlogBytes = 0;
    std::size_t messageLimit = 0;
    bool isCancelled = false;
    bool isAborted = false;
    std::shared_ptr<Visit> stay;
    int pings = 0;
    SignsOfLife signs;
    /// The next message cannot be received: out of memory.
    bool breaks = false;
    /// While false, what is sent stays in the queue.
    bool isRead = true;

    void deliver(std::string text) { push({Opcode::text, std::move(text)}); }
    void deliverBinary() { push({Opcode::binary, {}}); }
    void close() {
        if (std::exchange(hasEnded_, true)) return;
        changed_.notifyAll();
        boost::asio::post(executor_, [receiver = receiver_] {
            if (const auto present = receiver.lock()) present->onEnd();
        });
    }
    void hangUp() {
        if (const auto present = receiver_.lock()) present->onHangUp();
    }
    void readOn() {
        isRead = true;
        changed_.notifyAll();
        handOn();
    }
    std::vector<std::string> texts(Kind kind) const {
        std::vector<std::string> result;
        for (const auto& message : sent) {
            if (message.kind == kind) result.push_back(message.text);
        }
        return result;
    }
    std::size_t waitingMessages() const { return incoming_.size(); }

    // WebSocketConnection

    Task<std::optional<Message>> receive() override {
        while (incoming_.empty() && !hasEnded_) {
            co_await changed_.wait();
        }
        if (breaks) throw std::bad_alloc();
        if (incoming_.empty()) co_return std::nullopt;
        auto message = std::move(incoming_.front());
        incoming_.pop_front();
        co_return message;
    }

    Task<> opened() override { co_return; }

    void ping() override { ++pings; }

    SignsOfLife signsOfLife() const override { return signs; }

    void setReceiver(std::weak_ptr<Receiver> receiver) override {
        receiver_ = std::move(receiver);
        resume();
    }

    void resume() override {
        isReceiverReady_ = true;
        boost::asio::post(executor_, [this] { handOn(); });
    }

    void send(std::string text, Kind kind) override {
        if (!hasEnded_) sent.push_back({std::move(text), kind});
    }

    void sendPart(std::string text, bool isLast) override {
        if (!hasEnded_) parts.emplace_back(std::move(text), isLast);
    }

    Task<> drained() override {
        while (!isRead && !hasEnded_) {
            co_await changed_.wait();
        }
        if (hasEnded_) throw NetworkError(NetworkError::Case::connectionClosed, "gone");
    }

    std::size_t backlog() const override { return backlogBytes; }
    void setMessageLimit(std::size_t bytes) override { messageLimit = bytes; }
    void cancel() override {
        isCancelled = true;
        close();
    }
    void abort() override {
        isAborted = true;
        close();
    }
    std::shared_ptr<Visit> visit() const override { return stay; }
    std::optional<NetworkError> failure() const override { return std::nullopt; }

  private:
    void push(Message message) {
        incoming_.push_back(std::move(message));
        changed_.notifyAll();
        handOn();
    }

    /// A receiver that breaks ends the connection; answers that wait to be read hold up what follows.
    void handOn() {
        while (isReceiverReady_ && isRead && !incoming_.empty() && !hasEnded_) {
            const auto receiver = receiver_.lock();
            if (!receiver) return;
            if (breaks) return cancel();
            auto message = std::move(incoming_.front());
            incoming_.pop_front();
            isReceiverReady_ = false; // it may resume before it returns
            if (receiver->onMessage(std::move(message))) isReceiverReady_ = true;
        }
    }

    const boost::asio::any_io_executor executor_;
    std::deque<Message> incoming_;
    std::weak_ptr<Receiver> receiver_;
    bool isReceiverReady_ = false;
    bool hasEnded_ = false;
    Event changed_;
};

} // namespace tarnly::test
