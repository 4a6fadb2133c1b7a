#include <netinet/tcp.h>

#include "TarnlyPlatform/Net/TcpSockets.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;

void setTcpOption(tcp::socket& socket, int option, int value) {
    setsockopt(socket.native_handle(), IPPROTO_TCP, option, &value, sizeof value);
}

} // namespace

void setConversationOptions(tcp::socket& socket) {
    boost::system::error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    socket.set_option(asio::socket_base::keep_alive(true), ignored);
    setTcpOption(socket, TCP_KEEPIDLE, 30);
    setTcpOption(socket, TCP_KEEPINTVL, 10);
    setTcpOption(socket, TCP_KEEPCNT, 3);
}

} // namespace tarnly
