#include "TarnlyPlatform/Net/Resolve.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <string>

namespace tarnly {

namespace asio = boost::asio;
using asio::ip::tcp;

Task<ResolvedTcp> resolveTcp(Endpoint endpoint) {
    ResolvedTcp result;
    boost::system::error_code notLiteral;
    const auto literal = asio::ip::make_address(endpoint.host, notLiteral);
    if (!notLiteral) {
        result.addresses.emplace_back(literal, endpoint.port);
        co_return result;
    }
    auto executor = co_await asio::this_coro::executor;
    tcp::resolver resolver(executor);
    const auto port = std::to_string(endpoint.port);
    constexpr auto token = asio::as_tuple(asio::use_awaitable);
    auto [error, found] =
        co_await resolver.async_resolve(endpoint.host, port, tcp::resolver::numeric_service, token);
    result.error = error;
    for (const auto& entry : found) {
        result.addresses.push_back(entry.endpoint());
    }
    co_return result;
}

} // namespace tarnly
