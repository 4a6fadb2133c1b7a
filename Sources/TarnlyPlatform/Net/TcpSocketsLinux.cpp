#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "TarnlyPlatform/Net/TcpSockets.hpp"

namespace tarnly {
namespace {

void setOption(int socket, int level, int option, int value) {
    setsockopt(socket, level, option, &value, sizeof value);
}

/// A peer that acknowledges nothing of what was sent to it has gone. In milliseconds; the system looks when
/// it sends again, so that is some seconds later.
constexpr int unacknowledgedPatience = 45'000;

} // namespace

void setConversationOptions(boost::asio::ip::tcp::socket::native_handle_type socket) {
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, 30);
    setOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, 10);
    setOption(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
    setOption(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, unacknowledgedPatience);
}

} // namespace tarnly
