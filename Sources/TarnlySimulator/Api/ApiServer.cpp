#include "TarnlySimulator/Api/ApiServer.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly::simulator {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;
using Parser = http::request_parser<http::string_body>;

constexpr auto requestPatience = std::chrono::seconds(10);
constexpr auto responsePatience = std::chrono::minutes(5);
constexpr std::uint32_t largestHead = 16 * 1024;
constexpr std::uint64_t largestBody = 1024 * 1024;

/// Whether the peer has sent something that is no request, rather than too little or far too much.
bool isMisunderstood(const error_code& error) {
    return error && error.category() != boost::system::system_category() && error != beast::error::timeout &&
           error != http::error::end_of_stream && error != http::error::partial_message &&
           error != http::error::header_limit;
}

HttpRequest requestFrom(http::request<http::string_body> message) {
    HttpRequest request;
    request.method = message.method_string();
    request.target = message.target();
    for (const auto& header : message)
        request.headers.emplace_back(header.name_string(), header.value());
    request.body = std::move(message.body());
    return request;
}

HttpResponse plainText(unsigned status, std::string text) {
    return {status, "text/plain; charset=utf-8", std::move(text)};
}

/// False when the peer does not take it.
Task<bool> respond(beast::tcp_stream& peer, HttpResponse response, bool keepsAlive) {
    http::response<http::string_body> message;
    message.result(response.status);
    if (!response.contentType.empty()) message.set(http::field::content_type, response.contentType);
    message.content_length(response.body.size());
    message.set(http::field::connection, keepsAlive ? "keep-alive" : "close");
    if (message.result() == http::status::upgrade_required) message.set(http::field::upgrade, "websocket");
    message.body() = std::move(response.body);
    peer.expires_after(responsePatience);
    auto [error, size] = co_await http::async_write(peer, message, asTuple);
    co_return !error;
}

} // namespace

struct ApiServer::State {
    Clock& clock;
    const RequestHandler onRequest;
    const ConnectionHandler onConnection;
    bool isCancelled = false;

    static Task<> serve(std::shared_ptr<State> state, tcp::socket socket);
    static Task<bool> serveOne(std::shared_ptr<State> state, beast::tcp_stream& peer,
                               beast::flat_buffer& received);
    static void upgrade(State& state, beast::tcp_stream& peer, const HttpRequest& request,
                        std::string received);
};

/// Answers requests until the peer leaves, or becomes a WebSocket.
Task<> ApiServer::State::serve(std::shared_ptr<State> state, tcp::socket socket) {
    beast::tcp_stream peer(std::move(socket));
    beast::flat_buffer received;
    bool goesOn = true;
    while (goesOn && !state->isCancelled) {
        goesOn = co_await serveOne(state, peer, received);
    }
    error_code ignored;
    peer.socket().shutdown(tcp::socket::shutdown_send, ignored);
}

/// Whether another request may follow.
Task<bool> ApiServer::State::serveOne(std::shared_ptr<State> state, beast::tcp_stream& peer,
                                      beast::flat_buffer& received) {
    Parser parser;
    parser.header_limit(largestHead);
    parser.body_limit(largestBody);
    peer.expires_after(requestPatience);
    auto [error, size] = co_await http::async_read(peer, received, parser, asTuple);
    if (isMisunderstood(error) || (!error && parser.chunked())) {
        auto refusal = plainText(400, "That is not a request that this port understands.\n");
        co_await respond(peer, std::move(refusal), false);
        co_return false;
    }
    if (error) co_return false;
    peer.expires_never();
    const bool keepsAlive = parser.keep_alive();
    const bool isUpgrade = beast::websocket::is_upgrade(parser.get());
    auto request = requestFrom(parser.release());
    auto response = co_await state->onRequest(request, isUpgrade);
    if (!response && isUpgrade) {
        auto rest = beast::buffers_to_string(received.data());
        upgrade(*state, peer, request, std::move(rest));
        co_return false;
    }
    if (!response) response = plainText(426, "This port speaks WebSocket.\n");
    const bool isTaken = co_await respond(peer, std::move(*response), keepsAlive);
    const bool goesOn = isTaken && keepsAlive;
    co_return goesOn;
}

void ApiServer::State::upgrade(State& state, beast::tcp_stream& peer, const HttpRequest& request,
                               std::string received) {
    if (state.isCancelled) return;
    auto connection = acceptWebSocket(peer.release_socket(), state.clock, request, std::move(received));
    if (connection) state.onConnection(std::move(connection));
}

ApiServer::ApiServer(asio::any_io_executor executor, Clock& clock, std::uint16_t port,
                     RequestHandler onRequest, ConnectionHandler onConnection)
    : state_(std::make_shared<State>(clock, std::move(onRequest), std::move(onConnection))),
      acceptor_(std::move(executor), clock, port, Reach::loopbackIPv4,
                [state = state_](tcp::socket socket) { return State::serve(state, std::move(socket)); }) {}

ApiServer::~ApiServer() { cancel(); }

std::uint16_t ApiServer::port() const { return acceptor_.port(); }

void ApiServer::cancel() {
    state_->isCancelled = true;
    acceptor_.cancel();
}

} // namespace tarnly::simulator
