#include "TarnlyPlatform/Net/WebSocketListener.hpp"

#include <algorithm>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <utility>

#include "TarnlyPlatform/Net/BeastWebSocket.hpp"
#include "TarnlyPlatform/Net/HttpMessage.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr auto requestPatience = std::chrono::seconds(10);
constexpr auto responsePatience = std::chrono::minutes(5);
constexpr auto acceptPause = std::chrono::milliseconds(100);
constexpr std::size_t largestHead = 16 * 1024;
constexpr std::size_t largestBody = 1024 * 1024;
constexpr std::string_view headEnd = "\r\n\r\n";

constexpr auto asTuple = asio::as_tuple(asio::use_awaitable);

/// One socket for both families where the system has IPv6, else IPv4 alone.
void openFor(tcp::acceptor& acceptor, std::uint16_t port, WebSocketListener::Reach reach) {
    tcp::endpoint endpoint(tcp::v4(), port);
    if (reach == WebSocketListener::Reach::loopbackIPv4) {
        endpoint.address(asio::ip::address_v4::loopback());
        acceptor.open(tcp::v4());
    } else {
        error_code noIPv6;
        acceptor.open(tcp::v6(), noIPv6);
        if (!noIPv6) acceptor.set_option(asio::ip::v6_only(false), noIPv6);
        if (!noIPv6) {
            endpoint = tcp::endpoint(tcp::v6(), port);
        } else {
            acceptor.close();
            acceptor.open(tcp::v4());
        }
    }
    acceptor.set_option(asio::socket_base::reuse_address(true));
    acceptor.bind(endpoint);
    acceptor.listen();
}

HttpResponse plainText(unsigned status, std::string text) {
    return {status, "text/plain; charset=utf-8", std::move(text)};
}

/// One accepted peer while it still speaks plain HTTP. Every step has a deadline, at which the socket closes.
class HttpPeer {
  public:
    explicit HttpPeer(tcp::socket socket)
        : socket_(std::make_shared<tcp::socket>(std::move(socket))), deadline_(socket_->get_executor()) {}

    /// The next request's head up to and with the empty line; empty when the peer sends none.
    Task<std::string> readHead() {
        arm(requestPatience);
        auto buffer = asio::dynamic_buffer(received_, largestHead);
        auto [error, size] = co_await asio::async_read_until(*socket_, buffer, headEnd, asTuple);
        if (error) co_return std::string();
        co_return take(size);
    }

    /// The `size` bytes behind the head; absent when the peer does not send them all.
    Task<std::optional<std::string>> readBody(std::size_t size) {
        const auto missing = size - std::min(size, received_.size());
        auto buffer = asio::dynamic_buffer(received_);
        auto [error, count] =
            co_await asio::async_read(*socket_, buffer, asio::transfer_exactly(missing), asTuple);
        if (error) co_return std::nullopt;
        co_return take(size);
    }

    /// The application may take as long as it likes.
    void awaitAnswer() { deadline_.cancel(); }

    /// False when the peer does not take it.
    Task<bool> respond(HttpResponse response, bool keepsAlive) {
        arm(responsePatience);
        const auto text = formatResponse(response, keepsAlive);
        auto [error, size] = co_await asio::async_write(*socket_, asio::buffer(text), asTuple);
        co_return !error;
    }

    /// Says that no more responses follow.
    void finish() {
        error_code ignored;
        socket_->shutdown(tcp::socket::shutdown_send, ignored);
    }

    tcp::socket takeSocket() {
        deadline_.cancel();
        return std::move(*socket_);
    }

    std::string takeReceived() { return std::exchange(received_, {}); }

  private:
    void arm(std::chrono::steady_clock::duration patience) {
        deadline_.expires_after(patience);
        deadline_.async_wait([weak = std::weak_ptr(socket_)](error_code cancelled) {
            const auto socket = weak.lock();
            error_code ignored;
            if (!cancelled && socket) socket->close(ignored);
        });
    }

    std::string take(std::size_t size) {
        auto taken = received_.substr(0, size);
        received_.erase(0, size);
        return taken;
    }

    std::shared_ptr<tcp::socket> socket_;
    asio::steady_timer deadline_;
    std::string received_;
};

} // namespace

struct WebSocketListener::State {
    State(asio::any_io_executor executor, Options givenOptions, ConnectionHandler handler)
        : acceptor(std::move(executor)), options(std::move(givenOptions)), onConnection(std::move(handler)) {}

    tcp::acceptor acceptor;
    Options options;
    ConnectionHandler onConnection;
    std::uint16_t port = 0;
    bool isCancelled = false;

    static Task<> acceptAll(std::shared_ptr<State> state);
    static Task<> serve(std::shared_ptr<State> state, tcp::socket socket);
    static Task<std::optional<HttpResponse>> answer(std::shared_ptr<State> state, HttpRequest request,
                                                    bool isUpgrade);
    static Task<> upgrade(std::shared_ptr<State> state, HttpPeer& peer, std::string head);
};

Task<> WebSocketListener::State::acceptAll(std::shared_ptr<State> state) {
    const auto executor = state->acceptor.get_executor();
    while (!state->isCancelled) {
        auto [error, socket] = co_await state->acceptor.async_accept(asTuple);
        if (state->isCancelled) co_return;
        if (!error) {
            asio::co_spawn(executor, serve(state, std::move(socket)), asio::detached);
            continue;
        }
        // Out of descriptors, the waiting peer would wake us again at once.
        asio::steady_timer pause(executor, acceptPause);
        co_await pause.async_wait(asTuple);
    }
}

/// What the application answers; absent for an upgrade that goes ahead.
Task<std::optional<HttpResponse>> WebSocketListener::State::answer(std::shared_ptr<State> state,
                                                                   HttpRequest request, bool isUpgrade) {
    std::optional<HttpResponse> response;
    if (state->options.onRequest) {
        response = co_await state->options.onRequest(std::move(request), isUpgrade);
    }
    if (!response && !isUpgrade) response = plainText(426, "This port speaks WebSocket.\n");
    co_return response;
}

/// Answers requests until the peer leaves, or becomes a WebSocket.
Task<> WebSocketListener::State::serve(std::shared_ptr<State> state, tcp::socket socket) {
    HttpPeer peer(std::move(socket));
    bool keepsAlive = true;
    while (keepsAlive && !state->isCancelled) {
        const auto headText = co_await peer.readHead();
        if (headText.empty()) co_return;
        auto head = parseRequestHead(headText);
        if (!head || head->contentLength > largestBody) {
            auto refusal = plainText(400, "That is not a request that this port understands.\n");
            co_await peer.respond(std::move(refusal), false);
            break;
        }
        auto body = co_await peer.readBody(head->contentLength);
        if (!body) co_return;
        head->request.body = std::move(*body);
        peer.awaitAnswer();
        auto response = co_await answer(state, std::move(head->request), head->isWebSocketUpgrade);
        if (!response) {
            co_await upgrade(state, peer, headText);
            co_return;
        }
        const bool isTaken = co_await peer.respond(std::move(*response), head->keepsAlive);
        keepsAlive = isTaken && head->keepsAlive;
    }
    peer.finish();
}

Task<> WebSocketListener::State::upgrade(std::shared_ptr<State> state, HttpPeer& peer, std::string head) {
    auto received = peer.takeReceived();
    auto connection = co_await acceptWebSocket(peer.takeSocket(), std::move(head), std::move(received));
    if (connection && !state->isCancelled) state->onConnection(std::move(connection));
}

WebSocketListener::WebSocketListener(asio::any_io_executor executor, Options options,
                                     ConnectionHandler onConnection)
    : state_(std::make_shared<State>(executor, std::move(options), std::move(onConnection))) {
    try {
        openFor(state_->acceptor, state_->options.port, state_->options.reach);
    } catch (const boost::system::system_error& error) {
        throw NetworkError(NetworkError::Case::listenFailed,
                           "port " + std::to_string(state_->options.port) + ": " + error.code().message());
    }
    state_->port = state_->acceptor.local_endpoint().port();
    asio::co_spawn(executor, State::acceptAll(state_), asio::detached);
}

WebSocketListener::~WebSocketListener() { cancel(); }

std::uint16_t WebSocketListener::port() const { return state_->port; }

void WebSocketListener::cancel() {
    state_->isCancelled = true;
    error_code ignored;
    state_->acceptor.close(ignored);
}

} // namespace tarnly
