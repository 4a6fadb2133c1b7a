#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include "Modes.hpp"
#include "Poller.hpp"

namespace tarnly::load {
namespace {

constexpr std::chrono::milliseconds forever(-1);

struct Peer {
    Descriptor socket;
    std::size_t received = 0; ///< bytes of the request that is under way
};

class EchoServer {
  public:
    explicit EchoServer(const EchoSizes& sizes)
        : sizes_(sizes), reply_(sizes.reply, 'x'), listener_(listenAnywhere()) {
        stopBlocking(listener_);
        poller_.watch(listener_, nullptr);
    }

    std::uint16_t port() const { return portOf(listener_); }

    void turn() {
        for (const auto& event : poller_.wait(forever)) {
            if (event.data.ptr == nullptr) {
                acceptAll();
            } else if (auto* peer = static_cast<Peer*>(event.data.ptr); !serve(*peer)) {
                peers_.erase(peer);
            }
        }
    }

  private:
    void acceptAll() {
        for (;;) {
            Descriptor socket(accept4(listener_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
            if (socket.number() < 0) return;
            stopDelaying(socket);
            auto peer = std::make_unique<Peer>();
            peer->socket = std::move(socket);
            poller_.watch(peer->socket, peer.get());
            peers_.emplace(peer.get(), std::move(peer));
        }
    }

    /// Whether the peer is still there. It waits for its reply before it asks again, so nothing queues up.
    bool serve(Peer& peer) {
        std::ptrdiff_t count = 0;
        try {
            count = receive(peer.socket, room_);
        } catch (const std::system_error&) {
            return false;
        }
        if (count <= 0) return count < 0;
        peer.received += static_cast<std::size_t>(count);
        for (; peer.received >= sizes_.request; peer.received -= sizes_.request)
            if (send(peer.socket.number(), reply_.data(), reply_.size(), MSG_NOSIGNAL) < 0) return false;
        return true;
    }

    const EchoSizes sizes_;
    const std::string reply_;
    Descriptor listener_;
    Poller poller_;
    std::array<char, 65'536> room_{};
    std::unordered_map<Peer*, std::unique_ptr<Peer>> peers_;
};

} // namespace

void serveEcho(const EchoSizes& sizes) {
    EchoServer server(sizes);
    std::printf("Listening on port %u, for raw echoes.\n", server.port());
    std::fflush(stdout);
    for (;;)
        server.turn();
}

} // namespace tarnly::load
