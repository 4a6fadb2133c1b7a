#include "TarnlyPlatform/Net/SocketDeadline.hpp"

#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/this_coro.hpp>
#include <utility>

namespace tarnly {
namespace {

using boost::asio::ip::tcp;

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
