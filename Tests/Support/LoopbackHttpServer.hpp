#pragma once

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly::test {

/// A web server on a loopback port of its own: one request a connection, which may become a WebSocket.
class LoopbackHttpServer {
  public:
    /// Absent lets an upgrade go ahead; a plain request gets an answer.
    using RequestHandler =
        std::function<Task<std::optional<HttpResponse>>(HttpRequest request, bool isUpgrade)>;
    using ConnectionHandler = std::function<void(std::shared_ptr<WebSocketConnection>)>;

    explicit LoopbackHttpServer(boost::asio::io_context& io, RequestHandler onRequest,
                                ConnectionHandler onConnection = {})
        : state_(std::make_shared<State>(io, std::move(onRequest), std::move(onConnection))) {
        boost::asio::co_spawn(io, acceptAll(state_), boost::asio::detached);
    }

    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    /// Accepts no more; what is under way goes on.
    ~LoopbackHttpServer() { state_->acceptor.close(); }

    Endpoint endpoint() const { return {"127.0.0.1", state_->acceptor.local_endpoint().port()}; }

  private:
    using Socket = boost::asio::ip::tcp::socket;
    using Message = boost::beast::http::request<boost::beast::http::string_body>;
    static constexpr auto asTuple = boost::asio::as_tuple(boost::asio::use_awaitable);

    struct State {
        State(boost::asio::io_context& io, RequestHandler requestHandler, ConnectionHandler connectionHandler)
            : acceptor(io, {boost::asio::ip::address_v4::loopback(), 0}),
              onRequest(std::move(requestHandler)),
              onConnection(std::move(connectionHandler)) {}

        boost::asio::ip::tcp::acceptor acceptor;
        RequestHandler onRequest;
        ConnectionHandler onConnection;
        SystemClock clock;
    };

    static Task<> acceptAll(std::shared_ptr<State> state) {
        while (state->acceptor.is_open()) {
            auto [error, socket] = co_await state->acceptor.async_accept(asTuple);
            if (error) continue;
            boost::asio::co_spawn(socket.get_executor(), serve(state, std::move(socket)),
                                  boost::asio::detached);
        }
    }

    static Task<> serve(std::shared_ptr<State> state, Socket socket) {
        boost::beast::flat_buffer buffer;
        Message message;
        auto [error, size] = co_await boost::beast::http::async_read(socket, buffer, message, asTuple);
        if (error) co_return;
        const bool isUpgrade = boost::beast::websocket::is_upgrade(message);
        const auto request = requestFrom(message);
        auto response = co_await state->onRequest(request, isUpgrade);
        if (response) {
            co_await respond(std::move(socket), std::move(*response));
            co_return;
        }
        std::string received(static_cast<const char*>(buffer.data().data()), buffer.size());
        auto connection = acceptWebSocket(std::move(socket), state->clock, request, std::move(received));
        if (connection) state->onConnection(std::move(connection));
    }

    static HttpRequest requestFrom(const Message& message) {
        HttpRequest request;
        request.method = message.method_string();
        request.target = message.target();
        for (const auto& header : message)
            request.headers.emplace_back(header.name_string(), header.value());
        request.body = message.body();
        return request;
    }

    static Task<> respond(Socket socket, HttpResponse response) {
        boost::beast::http::response<boost::beast::http::string_body> message;
        message.result(response.status);
        message.set(boost::beast::http::field::content_type, response.contentType);
        message.set(boost::beast::http::field::connection, "close");
        message.body() = std::move(response.body);
        message.prepare_payload();
        co_await boost::beast::http::async_write(socket, message, asTuple);
    }

    std::shared_ptr<State> state_;
};

} // namespace tarnly::test
