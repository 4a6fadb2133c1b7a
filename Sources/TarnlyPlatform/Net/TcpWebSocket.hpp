#pragma once

#include <boost/asio/basic_stream_socket.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/NetworkExecutor.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/OutgoingQueue.hpp"
#include "TarnlyPlatform/Net/WebSocketCodec.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"
#include "TarnlyPlatform/Net/WebSocketLimits.hpp"

namespace tarnly {

/// A WebSocket over TCP: carries out what the codec reads, and writes what is sent.
///
/// No coroutine runs for a message: the socket's handlers go from state to state, and a message is handed on,
/// answered and written in the handler that read it. Coroutines only watch over time. Made by
/// `WebSocketOpening`; held by its handlers until it has ended.
class TcpWebSocket final : public WebSocketConnection, public std::enable_shared_from_this<TcpWebSocket> {
  public:
    using Socket = boost::asio::basic_stream_socket<boost::asio::ip::tcp, NetworkExecutor>;

    /// `socket` may still have to be connected, through `socket()`. `clock` outlives the connection.
    TcpWebSocket(Socket socket, WebSocketSide own, Clock& clock, const WebSocketLimits& limits);

    // For the opening

    Socket& socket() { return socket_; }
    /// They end with the connection, and what limits the opening with that.
    TaskGroup& tasks() { return tasks_; }
    TaskGroup& opening() { return opening_; }
    bool hasEnded() const { return state_ == State::ended; }
    /// Until the connection ends. To be called before `open`.
    void accompany(std::shared_ptr<Visit> visit);
    /// The handshake is done; `received` is what came behind it.
    void open(std::string received);
    /// Ends the connection for a reason.
    void fail(NetworkError::Case which, const std::string& detail);
    /// What an exception in one of the connection's tasks means: its end.
    TaskGroup::OnFailure endOnFailure();

    // WebSocketConnection

    Task<> opened() override;
    void ping() override;
    SignsOfLife signsOfLife() const override;
    Task<std::optional<Message>> receive() override;
    void setReceiver(std::weak_ptr<Receiver> receiver) override;
    void resume() override;
    void send(std::string text, Kind kind) override;
    void sendPart(std::string text, bool isLast) override;
    Task<> drained() override;
    std::size_t backlog() const override { return outgoing_.backlog() + heldBytes_; }
    void setMessageLimit(std::size_t bytes) override { decoder_.setMessageLimit(bytes); }
    void cancel() override;
    void abort() override { fail(NetworkError::Case::connectionClosed, "the connection has been cut"); }
    std::shared_ptr<Visit> visit() const override { return visit_; }
    std::optional<NetworkError> failure() const override { return failure_; }

  private:
    enum class State {
        /// What is sent waits for the handshake.
        opening,
        open,
        /// The peer has said its last; what it asked before is answered still.
        finishing,
        /// Our close is on its way, and the peer's is waited for.
        closing,
        ended
    };

    // Incoming: read, work on what was read, hand messages on, read again
    void startReading();
    void noteRead(const boost::system::error_code& error, std::size_t size);
    void work();
    bool workOnce();
    bool mayReadOn() const;
    bool isStranger() const { return visit_ && visit_->isStranger(); }
    bool isReceiverBusy() const { return hasReceiver_ && !isReceiverReady_; }
    void note(const WebSocketEvent& event);
    void makeCapacity(std::size_t more);
    void takeRoom();
    void noteMessage(Opcode opcode);
    void deliver();
    bool isTakerIdle() const;
    void workLater();

    // Outgoing: write as much as the network takes, and the rest when it takes more
    bool canSend() const { return state_ != State::closing && state_ != State::ended; }
    void put(WebSocketOpcode opcode, bool isFinal, std::string payload, bool isUnsolicited = false);
    std::optional<WebSocketMask> newMask() const;
    void flush();
    void writeOn(bool isProgress);
    void noteDrained();

    // The limits of time
    void expectMore();
    void watchForStalls();
    std::optional<Clock::TimePoint> stallsAt() const;
    static Task<> watch(std::shared_ptr<TcpWebSocket> self);

    // The end
    void finish(const boost::system::error_code& error);
    void close(WebSocketCloseCode code);
    static Task<> endAfterPatience(std::shared_ptr<TcpWebSocket> self);
    void end();
    void breakDown() noexcept;
    [[noreturn]] void throwEnded() const;

    /// Out of memory, say, that is the end of this connection, and of no other.
    void guarded(const auto& step) {
        try {
            step();
        } catch (const std::exception&) {
            breakDown();
        }
    }

    OnOneThread thread_;
    Clock& clock_;
    const WebSocketLimits limits_;
    const WebSocketSide own_;
    Socket socket_;
    State state_ = State::opening;
    std::optional<NetworkError> failure_;
    /// Why the peer says no more, where that is no close in order.
    std::optional<NetworkError> lastWord_;
    WebSocketCloseCode peersCode_ = WebSocketCloseCode::normal;
    bool hasPeerClosed_ = false;
    std::shared_ptr<Visit> visit_;

    // Incoming
    WebSocketDecoder decoder_;
    std::vector<char> buffer_;
    std::size_t workedOn_ = 0; // of the buffer
    std::size_t received_ = 0;
    bool isReading_ = false;
    bool isAtEnd_ = false;
    Clock::TimePoint expectingSince_{};
    Clock::TimePoint messageBeganAt_{}; // one that takes room
    bool isWorking_ = false;
    bool isWorkPosted_ = false;
    std::string content_;
    std::vector<ByteBudget::Lease> rooms_;
    std::size_t wantedRoom_ = 0;
    bool isWaitingForRoom_ = false;
    bool isWaitingForLimit_ = false; // for a long message
    std::deque<Message> incoming_;
    std::size_t incomingBytes_ = 0;
    std::weak_ptr<Receiver> receiver_;
    bool hasReceiver_ = false;
    bool isReceiverReady_ = false;
    bool isWanted_ = false; // somebody awaits `receive`
    SignsOfLife signs_;

    // Outgoing
    OutgoingQueue outgoing_;
    bool isInParts_ = false;
    std::deque<std::pair<std::string, Kind>> held_; // until the last part
    std::size_t heldBytes_ = 0;
    std::uint64_t pingEndsAt_ = 0;
    bool isWaitingToWrite_ = false;
    std::optional<Clock::TimePoint> lastProgress_; // absent while all has gone
    bool isStallWatched_ = false;

    Event changed_;
    TaskGroup tasks_;
    TaskGroup opening_;
};

} // namespace tarnly
