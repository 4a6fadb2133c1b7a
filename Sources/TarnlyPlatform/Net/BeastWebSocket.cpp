#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

#include <algorithm>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/role.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/verb.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <chrono>
#include <deque>
#include <utility>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/ScannedStream.hpp"
#include "TarnlyPlatform/Net/TcpSockets.hpp"

namespace tarnly {

/// The library's last step. Its own version for TCP waits for the peer to hang up, for as long as the peer
/// likes; the socket is closed right after this one. Found by argument-dependent lookup.
template <typename Handler>
void async_teardown(boost::beast::role_type, ScannedStream& stream, Handler&& handler) {
    boost::system::error_code ignored;
    stream.next_layer().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    boost::asio::post(stream.get_executor(), [handler = std::forward<Handler>(handler)]() mutable {
        handler(boost::system::error_code{});
    });
}

namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;
using boost::system::error_code;

constexpr auto handshakePatience = std::chrono::seconds(10);
/// How long a peer may take nothing of what is sent to it before it is cut.
constexpr auto stallPatience = std::chrono::seconds(15);
/// How long `cancel` waits for what was sent and for the peer's close.
constexpr auto closePatience = std::chrono::milliseconds(500);
/// Unsolicited bytes that a peer may owe before it is cut.
constexpr std::size_t largestBacklog = 8 * 1024 * 1024;
constexpr std::size_t defaultMessageLimit = 64 * 1024 * 1024;
constexpr std::size_t chunkSize = 64 * 1024;

constexpr auto asTuple = asio::as_tuple(asio::use_awaitable);

class BeastWebSocket final : public WebSocketConnection, public std::enable_shared_from_this<BeastWebSocket> {
  public:
    BeastWebSocket(tcp::socket socket, Clock& clock)
        : clock_(clock),
          stream_(std::move(socket), clock),
          incomingChanged_(stream_.get_executor()),
          outgoingChanged_(stream_.get_executor()),
          tasks_(stream_.get_executor()),
          opening_(stream_.get_executor()) {
        // The limits are our own: they go by our clock.
        websocket::stream_base::timeout limits{};
        limits.handshake_timeout = websocket::stream_base::none();
        limits.idle_timeout = websocket::stream_base::none();
        limits.keep_alive_pings = false;
        stream_.set_option(limits);
        stream_.read_message_max(0); // our own limit can change while a message is under way
        stream_.auto_fragment(false);
        stream_.control_callback([this](websocket::frame_type kind, boost::beast::string_view) {
            if (kind == websocket::frame_type::pong) notePong();
        });
    }

    Task<bool> accept(HttpRequest upgrade, std::string received) {
        constexpr unsigned version = 11; // no other can be upgraded
        http::request<http::empty_body> request(http::string_to_verb(upgrade.method), upgrade.target,
                                                version);
        for (const auto& [name, value] : upgrade.headers)
            request.insert(name, value);
        stream_.next_layer().startScanning(std::move(received));
        opening_.spawn(limitOpening(shared_from_this(), "the opening handshake"), endOnFailure());
        auto [failure] = co_await stream_.async_accept(request, asTuple);
        if (failure) {
            end();
            co_return false;
        }
        open();
        co_return isOpen_;
    }

    static void startConnecting(const std::shared_ptr<BeastWebSocket>& self, Endpoint endpoint,
                                std::string target) {
        auto connecting = connect(self, std::move(endpoint), std::move(target));
        self->tasks_.spawn(std::move(connecting), self->endOnFailure());
    }

    static Task<> connect(std::shared_ptr<BeastWebSocket> self, Endpoint endpoint, std::string target) {
        const auto name = describe(endpoint);
        self->opening_.spawn(limitOpening(self, name), self->endOnFailure());
        auto [unresolved, addresses] = co_await resolveTcp(endpoint);
        if (unresolved)
            co_return self->fail(NetworkError::Case::connectionFailed, name + ": " + unresolved.message());
        if (self->hasEnded_) co_return; // cancelled meanwhile
        auto& socket = self->stream_.next_layer().next_layer();
        auto [refused, peer] = co_await asio::async_connect(socket, addresses, asTuple);
        if (refused)
            co_return self->fail(NetworkError::Case::connectionFailed, name + ": " + refused.message());
        setConversationOptions(socket);
        auto [failure] = co_await self->stream_.async_handshake(name, target, asTuple);
        if (failure)
            co_return self->fail(NetworkError::Case::connectionFailed, name + ": " + failure.message());
        self->open();
    }

    Task<std::optional<Message>> receive() override {
        thread_.check();
        const auto self = shared_from_this();
        const Wish wish(isWanted_);
        incomingChanged_.notifyAll();
        while (!ready_ && !hasEnded_) {
            co_await incomingChanged_.wait();
        }
        auto message = std::exchange(ready_, std::nullopt);
        incomingChanged_.notifyAll();
        co_return message;
    }

    void send(std::string text, Kind kind) override {
        thread_.check();
        if (hasEnded_ || isClosing_) return;
        if (kind == Kind::unsolicited) {
            if (backlog_ + text.size() > largestBacklog) {
                return fail(NetworkError::Case::timedOut, "the peer does not read what is sent to it");
            }
            backlog_ += text.size();
        }
        queue_.push_back({std::move(text), kind});
        ++queued_;
        if (isOpen_ && !isWriting_) startWriting();
    }

    Task<> drained() override {
        thread_.check();
        const auto self = shared_from_this();
        const auto target = queued_;
        while (written_ < target && !hasEnded_) {
            co_await outgoingChanged_.wait();
        }
        if (hasEnded_) throwEnded();
    }

    Task<> opened() override {
        thread_.check();
        const auto self = shared_from_this();
        while (!isOpen_ && !hasEnded_) {
            co_await outgoingChanged_.wait();
        }
        if (hasEnded_) throwEnded();
    }

    void ping() override {
        thread_.check();
        if (!isOpen_ || isClosing_ || hasEnded_ || std::exchange(isPinging_, true)) return;
        tasks_.spawn(sendPing(shared_from_this()), endOnFailure());
    }

    SignsOfLife signsOfLife() const override {
        return {stream_.next_layer().lastByteAt(), pongs_, lastPongAt_};
    }

    std::size_t backlog() const override { return backlog_; }

    void setMessageLimit(std::size_t bytes) override { messageLimit_ = bytes; }

    void cancel() override { close(websocket::close_code::normal); }

    std::optional<NetworkError> failure() const override { return failure_; }

  private:
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

    struct Outgoing {
        std::string text;
        Kind kind;
    };

    void open() {
        if (hasEnded_) return;
        isOpen_ = true;
        opening_.cancel();
        stream_.text(true);
        outgoingChanged_.notifyAll();
        tasks_.spawn(read(shared_from_this()), endOnFailure());
        if (!queue_.empty()) startWriting();
    }

    [[noreturn]] void throwEnded() const {
        if (failure_) throw *failure_;
        throw NetworkError(NetworkError::Case::connectionClosed, "the connection has been closed");
    }

    // Incoming

    void notePong() {
        ++pongs_;
        lastPongAt_ = clock_.now();
    }

    /// Reads until the connection ends. Goes on beyond the first chunk of a message only when somebody
    /// receives, and beyond a message only when it has been taken.
    static Task<> read(std::shared_ptr<BeastWebSocket> self) {
        bool isText = false;
        bool isFirst = true;
        std::string content;
        while (!self->hasEnded_) {
            auto buffer = asio::dynamic_buffer(content);
            auto [error, size] = co_await self->stream_.async_read_some(buffer, chunkSize, asTuple);
            if (error) co_return self->endReading(error);
            if (isFirst) isText = self->stream_.next_layer().scanner().takeIsText();
            if (!isText) content.clear();
            if (content.size() > self->messageLimit_) co_return self->close(websocket::close_code::too_big);
            isFirst = self->stream_.is_message_done();
            if (isFirst) {
                self->deliver(isText, std::exchange(content, {}));
                while (self->ready_ && !self->hasEnded_) {
                    co_await self->incomingChanged_.wait();
                }
            } else {
                while (!self->isWanted_ && !self->hasEnded_) {
                    co_await self->incomingChanged_.wait();
                }
            }
        }
    }

    void deliver(bool isText, std::string content) {
        if (isText) {
            ready_ = Message{Opcode::text, std::move(content)};
        } else {
            ready_ = Message{Opcode::binary, {}};
        }
        incomingChanged_.notifyAll();
    }

    void endReading(const error_code& error) {
        if (error == websocket::error::closed || error == asio::error::operation_aborted) return end();
        fail(NetworkError::Case::connectionClosed, error.message());
    }

    // Outgoing

    void startWriting() {
        isWriting_ = true;
        stream_.next_layer().noteProgress();
        if (!std::exchange(isStallWatched_, true)) {
            tasks_.spawn(watchForStall(shared_from_this()), endOnFailure());
        }
        tasks_.spawn(write(shared_from_this()), endOnFailure());
    }

    static Task<> write(std::shared_ptr<BeastWebSocket> self) {
        while (!self->queue_.empty() && !self->hasEnded_) {
            const auto buffer = asio::buffer(self->queue_.front().text);
            auto [error, size] = co_await self->stream_.async_write(buffer, asTuple);
            if (error) co_return self->fail(NetworkError::Case::connectionClosed, error.message());
            self->noteWritten();
        }
        self->isWriting_ = false;
    }

    static Task<> sendPing(std::shared_ptr<BeastWebSocket> self) {
        const websocket::ping_data nothing;
        auto [error] = co_await self->stream_.async_ping(nothing, asTuple);
        if (error) co_return self->fail(NetworkError::Case::connectionClosed, error.message());
        self->isPinging_ = false;
    }

    void noteWritten() {
        if (queue_.front().kind == Kind::unsolicited) backlog_ -= queue_.front().text.size();
        queue_.pop_front();
        ++written_;
        outgoingChanged_.notifyAll();
    }

    /// One timer for as long as there is traffic, instead of one a message.
    static Task<> watchForStall(std::shared_ptr<BeastWebSocket> self) {
        while (self->isWriting_ && !self->hasEnded_) {
            const auto deadline = self->stream_.next_layer().lastProgress() + stallPatience;
            const auto left = deadline - self->clock_.now();
            if (left <= Clock::Duration::zero()) {
                co_return self->fail(NetworkError::Case::timedOut,
                                     "the peer takes nothing of what is sent to it");
            }
            co_await self->clock_.sleepFor(left);
        }
        self->isStallWatched_ = false;
    }

    // The end

    void close(websocket::close_code code) {
        thread_.check();
        if (isClosing_ || hasEnded_) return;
        if (!isOpen_) return end();
        isClosing_ = true;
        tasks_.spawn(closeInOrder(shared_from_this(), code), endOnFailure());
    }

    static Task<> closeInOrder(std::shared_ptr<BeastWebSocket> self, websocket::close_code code) {
        self->tasks_.spawn(endAfterPatience(self), self->endOnFailure());
        while (self->isWriting_ && !self->hasEnded_) {
            co_await self->outgoingChanged_.wait();
        }
        if (self->hasEnded_) co_return;
        const websocket::close_reason reason(code);
        co_await self->stream_.async_close(reason, asTuple);
        self->end();
    }

    static Task<> limitOpening(std::shared_ptr<BeastWebSocket> self, std::string name) {
        co_await self->clock_.sleepFor(handshakePatience);
        if (!self->isOpen_) self->fail(NetworkError::Case::timedOut, name);
    }

    static Task<> endAfterPatience(std::shared_ptr<BeastWebSocket> self) {
        co_await self->clock_.sleepFor(closePatience);
        self->end();
    }

    /// Out of memory, say, in one of the connection's tasks: that is its end, and nobody waits for it for
    /// ever.
    TaskGroup::OnFailure endOnFailure() {
        return [weak = weak_from_this()](const std::exception_ptr&) {
            const auto self = weak.lock();
            if (self) self->fail(NetworkError::Case::connectionClosed, "the connection broke down");
        };
    }

    void fail(NetworkError::Case which, const std::string& detail) {
        if (hasEnded_) return;
        if (!isClosing_) failure_.emplace(which, detail);
        end();
    }

    void end() {
        if (hasEnded_) return;
        hasEnded_ = true;
        error_code ignored;
        stream_.next_layer().next_layer().close(ignored);
        tasks_.cancel();
        opening_.cancel();
        incomingChanged_.notifyAll();
        outgoingChanged_.notifyAll();
    }

    OnOneThread thread_;
    Clock& clock_;
    websocket::stream<ScannedStream> stream_;
    bool isOpen_ = false;
    bool isClosing_ = false;
    bool hasEnded_ = false;
    std::optional<NetworkError> failure_;

    std::size_t messageLimit_ = defaultMessageLimit;
    std::optional<Message> ready_;
    bool isWanted_ = false;
    std::uint64_t pongs_ = 0;
    std::optional<Clock::TimePoint> lastPongAt_;
    Event incomingChanged_;

    std::deque<Outgoing> queue_;
    std::size_t backlog_ = 0;
    std::uint64_t queued_ = 0;
    std::uint64_t written_ = 0;
    bool isWriting_ = false;
    bool isPinging_ = false;
    Event outgoingChanged_;

    TaskGroup tasks_;
    TaskGroup opening_;
    bool isStallWatched_ = false;
};

} // namespace

Task<std::shared_ptr<WebSocketConnection>> acceptWebSocket(tcp::socket socket, Clock& clock,
                                                           HttpRequest upgrade, std::string received) {
    setConversationOptions(socket);
    const auto connection = std::make_shared<BeastWebSocket>(std::move(socket), clock);
    const bool isOpen = co_await connection->accept(std::move(upgrade), std::move(received));
    if (!isOpen) co_return nullptr;
    co_return connection;
}

std::shared_ptr<WebSocketConnection> openWebSocket(asio::any_io_executor executor, Clock& clock,
                                                   Endpoint endpoint, std::string target) {
    auto connection = std::make_shared<BeastWebSocket>(tcp::socket(executor), clock);
    BeastWebSocket::startConnecting(connection, std::move(endpoint), std::move(target));
    return connection;
}

} // namespace tarnly
