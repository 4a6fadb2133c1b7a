#include "TarnlyPlatform/Net/WebSocketListener.hpp"

#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlyPlatform/Net/SocketDeadline.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;
using HeadParser = http::request_parser<http::empty_body>;

/// For the head of a request, and again for the answer to one that is no upgrade.
constexpr auto patience = std::chrono::seconds(10);
constexpr auto acceptPause = std::chrono::milliseconds(100);
constexpr std::uint32_t largestHead = 16 * 1024;

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

/// Neither silence nor more than anybody has to say is worth an answer.
bool deservesAnswer(const error_code& error) {
    return error.category() != boost::system::system_category() && error != http::error::end_of_stream &&
           error != http::error::partial_message && error != http::error::header_limit;
}

HttpRequest upgradeFrom(const HeadParser& head) {
    const auto& message = head.get();
    HttpRequest request;
    request.method = message.method_string();
    request.target = message.target();
    for (const auto& header : message)
        request.headers.emplace_back(header.name_string(), header.value());
    return request;
}

Task<> answer(tcp::socket& peer, http::status status, std::string text) {
    constexpr unsigned version = 11;
    http::response<http::string_body> response(status, version, std::move(text));
    response.set(http::field::content_type, "text/plain; charset=utf-8");
    response.content_length(response.body().size());
    response.set(http::field::connection, "close");
    if (status == http::status::upgrade_required) response.set(http::field::upgrade, "websocket");
    co_await http::async_write(peer, response, asTuple);
}

/// Says that no more follows, and waits for the peer to go: a socket closed with bytes unread would take the
/// answer back.
Task<> finish(tcp::socket& peer) {
    error_code error;
    peer.shutdown(tcp::socket::shutdown_send, error);
    std::array<char, 4096> unread;
    while (!error) {
        const auto buffer = asio::buffer(unread);
        auto [failure, size] = co_await peer.async_read_some(buffer, asTuple);
        error = failure;
    }
}

Task<> refuse(tcp::socket& peer, bool isRequest) {
    if (isRequest) {
        co_await answer(peer, http::status::upgrade_required, "This port speaks WebSocket.\n");
    } else {
        co_await answer(peer, http::status::bad_request,
                        "That is not a request that this port understands.\n");
    }
    co_await finish(peer);
}

} // namespace

struct WebSocketListener::State {
    State(asio::any_io_executor executor, Clock& givenClock, Options givenOptions, ConnectionHandler handler)
        : clock(givenClock),
          acceptor(executor),
          options(std::move(givenOptions)),
          onConnection(std::move(handler)),
          tasks(std::move(executor)) {}

    OnOneThread thread;
    Clock& clock;
    tcp::acceptor acceptor;
    Options options;
    ConnectionHandler onConnection;
    std::uint16_t port = 0;
    bool isCancelled = false;
    TaskGroup tasks;

    static Task<> acceptAll(std::shared_ptr<State> state);
    static Task<bool> acceptOne(std::shared_ptr<State> state);
    static Task<> serve(std::shared_ptr<State> state, tcp::socket socket);
};

/// Goes on through every error: who comes later finds the port open.
Task<> WebSocketListener::State::acceptAll(std::shared_ptr<State> state) {
    while (!state->isCancelled) {
        bool isAccepted = false;
        try {
            isAccepted = co_await acceptOne(state);
        } catch (const std::exception&) {
        }
        if (isAccepted || state->isCancelled) continue;
        // Out of descriptors or memory, the waiting peer would wake us again at once.
        co_await state->clock.sleepFor(acceptPause);
    }
}

Task<bool> WebSocketListener::State::acceptOne(std::shared_ptr<State> state) {
    state->thread.check();
    auto [error, socket] = co_await state->acceptor.async_accept(asTuple);
    if (error || state->isCancelled) co_return false;
    auto serving = serve(state, std::move(socket));
    state->tasks.spawn(std::move(serving), dropFailure); // it costs this peer its connection
    co_return true;
}

/// Reads the head of one request, and makes the peer a WebSocket if it asks for that.
Task<> WebSocketListener::State::serve(std::shared_ptr<State> state, tcp::socket socket) {
    state->thread.check();
    const auto peer = std::make_shared<tcp::socket>(std::move(socket));
    SocketDeadline deadline(state->clock, peer);
    deadline.expireAfter(patience);
    beast::flat_buffer received;
    HeadParser head;
    head.header_limit(largestHead);
    auto [error, size] = co_await http::async_read_header(*peer, received, head, asTuple);
    if (state->isCancelled || (error && !deservesAnswer(error))) co_return;
    const bool isRequest = !error && !head.chunked();
    if (!isRequest || !beast::websocket::is_upgrade(head.get())) {
        deadline.expireAfter(patience);
        co_await refuse(*peer, isRequest);
        co_return;
    }
    deadline.cancel();
    auto request = upgradeFrom(head);
    auto rest = beast::buffers_to_string(received.data());
    auto connection =
        co_await acceptWebSocket(std::move(*peer), state->clock, std::move(request), std::move(rest));
    if (connection && !state->isCancelled) state->onConnection(std::move(connection));
}

WebSocketListener::WebSocketListener(asio::any_io_executor executor, Clock& clock, Options options,
                                     ConnectionHandler onConnection)
    : state_(
          std::make_shared<State>(std::move(executor), clock, std::move(options), std::move(onConnection))) {
    try {
        openFor(state_->acceptor, state_->options.port, state_->options.reach);
    } catch (const boost::system::system_error& error) {
        throw NetworkError(NetworkError::Case::listenFailed,
                           "port " + std::to_string(state_->options.port) + ": " + error.code().message());
    }
    state_->port = state_->acceptor.local_endpoint().port();
    state_->tasks.spawn(State::acceptAll(state_), dropFailure); // none leaves it
}

WebSocketListener::~WebSocketListener() { cancel(); }

std::uint16_t WebSocketListener::port() const { return state_->port; }

void WebSocketListener::cancel() {
    state_->isCancelled = true;
    error_code ignored;
    state_->acceptor.close(ignored);
    state_->tasks.cancel();
}

} // namespace tarnly
