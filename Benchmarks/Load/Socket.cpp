#include "Socket.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tarnly::load {
namespace {

/// Passes a system call's result on, or throws.
template <typename Result>
Result require(Result result, const char* what) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), what);
    return result;
}

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

Descriptor makeSocket() {
    return Descriptor(require(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"));
}

} // namespace

Descriptor::~Descriptor() {
    if (number_ >= 0) close(number_);
}

void raiseDescriptorLimit() {
    rlimit limit{};
    require(getrlimit(RLIMIT_NOFILE, &limit), "getrlimit");
    limit.rlim_cur = limit.rlim_max;
    require(setrlimit(RLIMIT_NOFILE, &limit), "setrlimit");
}

void pinTo(int processor) {
    if (processor < 0) return;
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<unsigned>(processor), &set);
    require(sched_setaffinity(0, sizeof set, &set), "sched_setaffinity");
}

Descriptor connectTo(std::uint16_t port) {
    auto socket = makeSocket();
    const auto address = loopback(port);
    require(connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), "connect");
    stopDelaying(socket);
    return socket;
}

Descriptor listenAnywhere() {
    auto socket = makeSocket();
    const auto address = loopback(0);
    require(bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
    require(listen(socket.number(), SOMAXCONN), "listen");
    return socket;
}

std::uint16_t portOf(const Descriptor& socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    require(getsockname(socket.number(), reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    return ntohs(address.sin_port);
}

void stopBlocking(const Descriptor& socket) {
    const int flags = require(fcntl(socket.number(), F_GETFL), "fcntl");
    require(fcntl(socket.number(), F_SETFL, flags | O_NONBLOCK), "fcntl");
}

void stopDelaying(const Descriptor& socket) {
    const int yes = 1;
    require(setsockopt(socket.number(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes), "setsockopt");
}

void sendAll(const Descriptor& socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto sent = require(send(socket.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL), "send");
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::ptrdiff_t receive(const Descriptor& socket, std::span<char> room) {
    const auto count = recv(socket.number(), room.data(), room.size(), 0);
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) return -1;
    return require(count, "recv");
}

} // namespace tarnly::load
