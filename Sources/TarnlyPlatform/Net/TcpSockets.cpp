#include "TarnlyPlatform/Net/TcpSockets.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;

Task<> expire(Clock& clock, Clock::Duration patience, std::weak_ptr<tcp::socket> socket,
              std::shared_ptr<bool> hasExpired) {
    co_await clock.sleepFor(patience);
    const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
    const auto present = socket.lock();
    if (!present || cancellation.cancelled() != boost::asio::cancellation_type::none) co_return;
    *hasExpired = true;
    boost::system::error_code ignored;
    present->close(ignored);
}

} // namespace

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
    auto [error, found] =
        co_await resolver.async_resolve(endpoint.host, port, tcp::resolver::numeric_service, asTuple);
    result.error = error;
    for (const auto& entry : found) {
        result.addresses.push_back(entry.endpoint());
    }
    co_return result;
}

SocketDeadline::SocketDeadline(Clock& clock, std::shared_ptr<tcp::socket> socket)
    : clock_(clock), socket_(std::move(socket)), timer_(socket_->get_executor()) {}

void SocketDeadline::expireAfter(Clock::Duration patience) {
    thread_.check();
    timer_.cancel();
    // Without a deadline, for lack of memory, nobody shall wait for ever.
    auto closeNow = [socket = std::weak_ptr(socket_)](const std::exception_ptr&) {
        boost::system::error_code ignored;
        if (const auto present = socket.lock()) present->close(ignored);
    };
    timer_.spawn(expire(clock_, patience, socket_, hasExpired_), std::move(closeNow));
}

} // namespace tarnly
