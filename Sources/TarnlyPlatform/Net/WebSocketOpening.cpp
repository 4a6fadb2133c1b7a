#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

#include <algorithm>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/rfc7230.hpp>
#include <boost/beast/websocket/detail/hybi13.hpp>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Net/TcpSockets.hpp"
#include "TarnlyPlatform/Net/TcpWebSocket.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::uint32_t largestAnswerHead = 16 * 1024;
constexpr std::size_t keySize = 24; // 16 bytes in base64

/// The answer to a key (RFC 6455, section 4.2.2). The library's own, from within: one hash is no reason for a
/// library more.
std::string acceptFor(std::string_view key) {
    beast::websocket::detail::sec_ws_accept_type accept;
    beast::websocket::detail::make_sec_ws_accept(accept, {key.data(), key.size()});
    return {accept.data(), accept.size()};
}

std::string newKey() {
    beast::websocket::detail::sec_ws_key_type key;
    beast::websocket::detail::make_sec_ws_key(key);
    return {key.data(), key.size()};
}

std::string headerOf(const HttpRequest& request, std::string_view wanted) {
    const auto found = std::ranges::find_if(
        request.headers, [&](const auto& header) { return beast::iequals(header.first, wanted); });
    return found == request.headers.end() ? std::string() : found->second;
}

/// What an upgrade that cannot be granted is told; empty for one that can.
std::string refusalOf(const HttpRequest& upgrade) {
    if (headerOf(upgrade, "Sec-WebSocket-Version") != "13") {
        return "HTTP/1.1 426 Upgrade Required\r\nSec-WebSocket-Version: 13\r\nUpgrade: websocket\r\n"
               "Connection: close\r\nContent-Length: 0\r\n\r\n";
    }
    const bool isSound = upgrade.method == "GET" && !headerOf(upgrade, "Host").empty() &&
                         headerOf(upgrade, "Sec-WebSocket-Key").size() == keySize;
    if (isSound) return {};
    return "HTTP/1.1 400 Bad Request\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
}

/// The same socket, with an executor of its own type.
TcpWebSocket::Socket typed(tcp::socket socket) {
    const auto executor = networkExecutor(socket.get_executor());
    const auto protocol = socket.local_endpoint().protocol();
    return {executor, protocol, socket.release()};
}

/// A client's opening. Its steps say themselves why they fail.
class Connecting {
  public:
    Connecting(std::shared_ptr<TcpWebSocket> connection, Endpoint endpoint, std::string target)
        : connection_(std::move(connection)),
          endpoint_(std::move(endpoint)),
          target_(std::move(target)),
          name_(describe(endpoint_)) {}

    static Task<> run(std::shared_ptr<Connecting> self) {
        const bool isConnected = co_await self->connect();
        if (!isConnected) co_return;
        co_await self->shakeHands();
    }

    static Task<> limit(std::shared_ptr<TcpWebSocket> connection, Clock& clock, Clock::Duration patience,
                        std::string name) {
        co_await clock.sleepFor(patience);
        connection->fail(NetworkError::Case::timedOut, name);
    }

    const std::string& name() const { return name_; }

  private:
    Task<bool> connect() {
        auto [unresolved, addresses] = co_await resolveTcp(endpoint_);
        if (!succeeds(unresolved)) co_return false;
        auto& socket = connection_->socket();
        auto [refused, peer] = co_await asio::async_connect(socket, addresses, asTuple);
        if (!succeeds(refused)) co_return false;
        setConversationOptions(socket.native_handle());
        co_return true;
    }

    Task<> shakeHands() {
        const auto key = newKey();
        const auto request = "GET " + target_ + " HTTP/1.1\r\nHost: " + name_ +
                             "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Key: " + key +
                             "\r\nSec-WebSocket-Version: 13\r\n\r\n";
        const auto bytes = asio::buffer(request);
        auto& socket = connection_->socket();
        auto [unsent, written] = co_await asio::async_write(socket, bytes, asTuple);
        if (!succeeds(unsent)) co_return;
        beast::flat_buffer received;
        http::response_parser<http::empty_body> answer;
        answer.header_limit(largestAnswerHead);
        auto [unread, size] = co_await http::async_read_header(socket, received, answer, asTuple);
        if (!succeeds(unread)) co_return;
        if (!grants(answer.get(), key))
            co_return fail("The WebSocket handshake was declined by the remote peer");
        connection_->open(beast::buffers_to_string(received.data()));
    }

    static bool grants(const http::response<http::empty_body>& answer, std::string_view key) {
        const auto accept = answer[http::field::sec_websocket_accept];
        return answer.result() == http::status::switching_protocols &&
               http::token_list(answer[http::field::connection]).exists("upgrade") &&
               http::token_list(answer[http::field::upgrade]).exists("websocket") &&
               std::string_view(accept.data(), accept.size()) == acceptFor(key);
    }

    bool succeeds(const error_code& error) {
        if (error) fail(error.message());
        return !error && !connection_->hasEnded(); // it may have been cancelled meanwhile
    }

    void fail(const std::string& why) {
        connection_->fail(NetworkError::Case::connectionFailed, name_ + ": " + why);
    }

    const std::shared_ptr<TcpWebSocket> connection_;
    const Endpoint endpoint_;
    const std::string target_;
    const std::string name_;
};

} // namespace

std::shared_ptr<WebSocketConnection> acceptWebSocket(tcp::socket socket, Clock& clock,
                                                     const HttpRequest& upgrade, std::string received,
                                                     const WebSocketLimits& limits,
                                                     std::shared_ptr<Visit> visit) {
    const auto refusal = refusalOf(upgrade);
    const auto answer =
        !refusal.empty() ? refusal
                         : "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                           "Sec-WebSocket-Accept: " +
                               acceptFor(headerOf(upgrade, "Sec-WebSocket-Key")) + "\r\n\r\n";
    // Nothing has been written to it: there is room for this.
    error_code error;
    const auto size = socket.write_some(asio::buffer(answer), error);
    if (!refusal.empty() || error || size < answer.size()) {
        socket.shutdown(tcp::socket::shutdown_send, error);
        return nullptr;
    }
    setConversationOptions(socket.native_handle());
    auto connection =
        std::make_shared<TcpWebSocket>(typed(std::move(socket)), WebSocketSide::server, clock, limits);
    connection->accompany(std::move(visit));
    connection->open(std::move(received));
    return connection;
}

std::shared_ptr<WebSocketConnection> openWebSocket(asio::any_io_executor executor, Clock& clock,
                                                   Endpoint endpoint, std::string target,
                                                   const WebSocketLimits& limits) {
    auto connection = std::make_shared<TcpWebSocket>(TcpWebSocket::Socket(networkExecutor(executor)),
                                                     WebSocketSide::client, clock, limits);
    const auto connecting = std::make_shared<Connecting>(connection, std::move(endpoint), std::move(target));
    connection->opening().spawn(Connecting::limit(connection, clock, limits.handshake, connecting->name()),
                                connection->endOnFailure());
    connection->tasks().spawn(Connecting::run(connecting), connection->endOnFailure());
    return connection;
}

} // namespace tarnly
