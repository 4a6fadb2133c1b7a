#include "TarnlyPlatform/Net/TcpAcceptor.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr auto acceptPause = std::chrono::milliseconds(100);
constexpr auto asTuple = asio::as_tuple(asio::use_awaitable);

/// One socket for both families where the system has IPv6, else IPv4 alone.
void openFor(tcp::acceptor& acceptor, std::uint16_t port, Reach reach) {
    tcp::endpoint endpoint(tcp::v4(), port);
    if (reach == Reach::loopbackIPv4) {
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

} // namespace

struct TcpAcceptor::State {
    State(asio::any_io_executor executor, Clock& givenClock, Serve givenServe)
        : clock(givenClock), serve(std::move(givenServe)), acceptor(executor), tasks(std::move(executor)) {}

    OnOneThread thread;
    Clock& clock;
    const Serve serve;
    tcp::acceptor acceptor;
    std::uint16_t port = 0;
    bool isCancelled = false;
    TaskGroup tasks;

    static Task<> acceptAll(std::shared_ptr<State> state);
    static Task<bool> acceptOne(std::shared_ptr<State> state);
};

Task<> TcpAcceptor::State::acceptAll(std::shared_ptr<State> state) {
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

Task<bool> TcpAcceptor::State::acceptOne(std::shared_ptr<State> state) {
    state->thread.check();
    auto [error, socket] = co_await state->acceptor.async_accept(asTuple);
    if (error || state->isCancelled) co_return false;
    auto serving = state->serve(std::move(socket));
    state->tasks.spawn(std::move(serving), dropFailure); // it costs this peer its connection
    co_return true;
}

TcpAcceptor::TcpAcceptor(asio::any_io_executor executor, Clock& clock, std::uint16_t port, Reach reach,
                         Serve serve)
    : state_(std::make_shared<State>(std::move(executor), clock, std::move(serve))) {
    try {
        openFor(state_->acceptor, port, reach);
    } catch (const boost::system::system_error& error) {
        throw NetworkError(NetworkError::Case::listenFailed,
                           "port " + std::to_string(port) + ": " + error.code().message());
    }
    state_->port = state_->acceptor.local_endpoint().port();
    state_->tasks.spawn(State::acceptAll(state_), dropFailure); // none leaves it
}

TcpAcceptor::~TcpAcceptor() { cancel(); }

std::uint16_t TcpAcceptor::port() const { return state_->port; }

void TcpAcceptor::cancel() {
    state_->isCancelled = true;
    error_code ignored;
    state_->acceptor.close(ignored);
    state_->tasks.cancel();
}

} // namespace tarnly
