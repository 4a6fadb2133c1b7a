#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/json/value.hpp>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

namespace tarnly::test {

/// The simulator's end of a WebSocket, in memory.
class FakeWebSocket final : public WebSocketConnection {
  public:
    FakeWebSocket(boost::asio::any_io_executor executor, const Clock& clock)
        : changed_(std::move(executor)), clock_(clock) {}

    Task<> opened() override;
    void ping() override;
    SignsOfLife signsOfLife() const override { return signs_; }

    Task<std::optional<Message>> receive() override;
    void setReceiver(std::weak_ptr<Receiver>) override {}
    void resume() override {}
    void sendPart(std::string, bool) override {}
    void send(std::string text, Kind kind) override;
    Task<> drained() override;
    std::size_t backlog() const override { return 0; }
    void setMessageLimit(std::size_t) override {}
    void cancel() override;
    /// The handshake waits for `open` or `refuse`.
    void holdOpening() { isOpening_ = true; }
    void abort() override { cancel(); }
    std::shared_ptr<Visit> visit() const override { return nullptr; }
    std::optional<NetworkError> failure() const override { return failure_; }

    void deliver(std::string text, Opcode opcode = Opcode::text);

    /// An update message with these values: JSON texts by dataref id.
    void deliverValues(const std::map<std::int64_t, std::string>& values);

    /// A pong, or another byte that says nothing.
    void deliverPong();
    void deliverByte() { signs_.lastByteAt = clock_.now(); }

    /// The handshake is done, or fails.
    void open();
    void refuse(const std::string& reason, NetworkError::Case which = NetworkError::Case::connectionFailed);

    bool isOpen() const { return isOpen_; }

    /// What was sent, parsed.
    std::vector<boost::json::value> sent;
    std::vector<Kind> kinds;
    int pings = 0;
    /// Whether pings are answered at once.
    bool answersPings = false;

  private:
    Event changed_;
    const Clock& clock_;
    SignsOfLife signs_;
    bool isOpening_ = false;
    std::optional<NetworkError> failure_;
    std::deque<Message> incoming_;
    bool isOpen_ = true;
};

/// A simulator that answers from memory and notes what it is asked.
class FakeTransport final : public XPlaneTransport {
  public:
    struct Exchange {
        Endpoint endpoint;
        HttpRequest request;
        std::chrono::milliseconds timeout;
    };

    struct Datagram {
        Endpoint endpoint;
        std::vector<std::byte> bytes;
    };

    FakeTransport(boost::asio::any_io_executor executor, VirtualClock& clock)
        : executor_(std::move(executor)), clock_(clock) {}

    Task<HttpResponse> fetch(Endpoint endpoint, HttpRequest request, std::chrono::milliseconds timeout,
                             OnceConnected onceConnected) override;
    std::shared_ptr<WebSocketConnection> openWebSocket(Endpoint endpoint, std::string target) override;
    Task<> sendDatagram(Endpoint endpoint, std::vector<std::byte> bytes) override;

    /// The methods and targets of `exchanges`: "GET /api/v2/datarefs".
    std::vector<std::string> exchangeLines() const;

    std::map<std::string, std::int64_t> datarefs;
    std::map<std::string, std::int64_t> commands;
    /// Time that every exchange takes; beyond its time-out it fails.
    std::chrono::milliseconds latency{0};
    /// Answers in place of the catalogues when its result is not absent; may throw.
    std::function<std::optional<HttpResponse>(const HttpRequest&)> answer;
    std::function<void()> onDatagram;
    /// Told of each new WebSocket, whose handshake waits for `open` when this returns false.
    std::function<bool(FakeWebSocket&)> onWebSocket;

    /// The requests that were sent.
    std::vector<Exchange> exchanges;
    std::vector<std::pair<Endpoint, std::string>> openedWebSockets;
    std::shared_ptr<FakeWebSocket> webSocket;
    std::vector<Datagram> datagrams;

  private:
    boost::asio::any_io_executor executor_;
    VirtualClock& clock_;
};

/// A catalogue response body.
std::string catalogueBody(const std::map<std::string, std::int64_t>& ids);

HttpResponse httpResponse(unsigned status, std::string body);

} // namespace tarnly::test
