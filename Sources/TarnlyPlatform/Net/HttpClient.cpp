#include "TarnlyPlatform/Net/HttpClient.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <memory>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlyPlatform/Net/TcpSockets.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::uint64_t largestResponse = 256 * 1024 * 1024;
/// What is read at once. An empty buffer would be filled by 512 bytes at a time, however long the response.
constexpr std::size_t readAtOnce = 64 * 1024;

/// One exchange, whose socket closes when its time is over.
class Exchange {
  public:
    Exchange(asio::any_io_executor executor, Clock& clock, Endpoint endpoint, Clock::Duration timeout)
        : endpoint_(std::move(endpoint)),
          socket_(std::make_shared<tcp::socket>(executor)),
          deadline_(clock, socket_) {
        deadline_.expireAfter(timeout);
    }

    Task<> connect() {
        auto [unresolved, addresses] = co_await resolveTcp(endpoint_);
        check(unresolved, NetworkError::Case::connectionFailed);
        auto [refused, peer] = co_await asio::async_connect(*socket_, addresses, asTuple);
        check(refused, NetworkError::Case::connectionFailed);
    }

    Task<> send(HttpRequest request) {
        http::request<http::string_body> message(http::string_to_verb(request.method), request.target, 11);
        message.set(http::field::host, describe(endpoint_));
        message.set(http::field::connection, "close");
        for (const auto& [name, value] : request.headers) {
            message.set(name, value);
        }
        message.body() = std::move(request.body);
        message.prepare_payload();
        auto [error, size] = co_await http::async_write(*socket_, message, asTuple);
        check(error, NetworkError::Case::connectionClosed);
    }

    Task<HttpResponse> receive() {
        boost::beast::flat_buffer buffer;
        buffer.reserve(readAtOnce);
        http::response_parser<http::string_body> parser;
        parser.body_limit(largestResponse);
        auto [error, size] = co_await http::async_read(*socket_, buffer, parser, asTuple);
        const bool isTransport = error.category() == boost::system::system_category() ||
                                 error == http::error::end_of_stream || error == http::error::partial_message;
        check(error,
              isTransport ? NetworkError::Case::connectionClosed : NetworkError::Case::invalidResponse);
        auto message = parser.release();
        HttpResponse response;
        response.status = message.result_int();
        response.contentType = message[http::field::content_type];
        response.body = std::move(message.body());
        co_return response;
    }

  private:
    void check(const error_code& error, NetworkError::Case which) const {
        if (deadline_.hasExpired()) throw NetworkError(NetworkError::Case::timedOut, describe(endpoint_));
        if (error) throw NetworkError(which, describe(endpoint_) + ": " + error.message());
    }

    Endpoint endpoint_;
    std::shared_ptr<tcp::socket> socket_;
    SocketDeadline deadline_;
};

} // namespace

Task<HttpResponse> fetchHttp(Clock& clock, Endpoint endpoint, HttpRequest request,
                             std::chrono::milliseconds timeout, OnceConnected onceConnected) {
    auto executor = co_await asio::this_coro::executor;
    Exchange exchange(executor, clock, std::move(endpoint), timeout);
    co_await exchange.connect();
    if (onceConnected) {
        co_await onceConnected();
    }
    co_await exchange.send(std::move(request));
    auto response = co_await exchange.receive();
    co_return response;
}

} // namespace tarnly
