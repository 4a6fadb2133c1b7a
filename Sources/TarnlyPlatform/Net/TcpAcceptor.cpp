#include "TarnlyPlatform/Net/TcpAcceptor.hpp"

#include <boost/asio/ip/v6_only.hpp>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/AcceptLoop.hpp"
#include "TarnlyPlatform/Net/ListenError.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

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

    static Task<> serveOne(std::shared_ptr<State> state, tcp::socket socket) {
        return state->serve(std::move(socket));
    }
};

TcpAcceptor::TcpAcceptor(asio::any_io_executor executor, Clock& clock, std::uint16_t port, Reach reach,
                         Serve serve)
    : state_(std::make_shared<State>(std::move(executor), clock, std::move(serve))) {
    try {
        openFor(state_->acceptor, port, reach);
    } catch (const boost::system::system_error& error) {
        throw ListenError(port, error.code());
    }
    state_->port = state_->acceptor.local_endpoint().port();
    state_->tasks.keepUp([state = std::weak_ptr(state_)] { return acceptAll(state.lock()); });
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
