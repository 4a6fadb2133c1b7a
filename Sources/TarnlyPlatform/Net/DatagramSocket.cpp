#include "TarnlyPlatform/Net/DatagramSocket.hpp"

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <string>

#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

using boost::asio::ip::udp;
using boost::system::error_code;

[[noreturn]] void fail(NetworkError::Case which, const Endpoint& endpoint, const error_code& error) {
    throw NetworkError(which, describe(endpoint) + ": " + error.message());
}

/// A literal address takes no detour over the system's resolver.
Task<std::vector<udp::endpoint>> resolve(Endpoint endpoint) {
    error_code notLiteral;
    const auto literal = boost::asio::ip::make_address(endpoint.host, notLiteral);
    std::vector<udp::endpoint> found;
    if (!notLiteral) {
        found.emplace_back(literal, endpoint.port);
        co_return found;
    }
    auto executor = co_await boost::asio::this_coro::executor;
    udp::resolver resolver(executor);
    const auto service = std::to_string(endpoint.port);
    error_code error;
    auto token = boost::asio::redirect_error(boost::asio::use_awaitable, error);
    auto results = co_await resolver.async_resolve(endpoint.host, service, token);
    if (error) fail(NetworkError::Case::connectionFailed, endpoint, error);
    for (const auto& result : results)
        found.push_back(result.endpoint());
    co_return found;
}

} // namespace

Task<> sendDatagram(Endpoint endpoint, std::vector<std::byte> bytes) {
    auto executor = co_await boost::asio::this_coro::executor;
    const auto addresses = co_await resolve(endpoint);
    error_code error = boost::asio::error::host_not_found;
    for (const auto& address : addresses) {
        udp::socket socket(executor);
        socket.open(address.protocol(), error);
        if (error) continue;
        const auto datagram = boost::asio::buffer(bytes);
        auto token = boost::asio::redirect_error(boost::asio::use_awaitable, error);
        co_await socket.async_send_to(datagram, address, token);
        if (!error) co_return;
    }
    fail(NetworkError::Case::sendFailed, endpoint, error);
}

} // namespace tarnly
