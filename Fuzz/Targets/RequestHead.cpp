#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/socket_base.hpp>
#include <optional>
#include <string>

#include "Fuzz/Targets.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Net/WebSocketListener.hpp"

namespace tarnly::fuzz {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;

/// Turns of two sides that answer each other at once.
constexpr int mostTurns = 10'000;

/// A listener that outlives the inputs, and who comes to it.
struct Port {
    asio::io_context io;
    test::VirtualClock clock; // nobody waits for anybody's patience
    std::shared_ptr<WebSocketConnection> accepted;
    WebSocketListener listener{io.get_executor(), clock, options(),
                               [this](auto connection) { accepted = std::move(connection); }};

    static WebSocketListener::Options options() {
        WebSocketListener::Options options;
        options.reach = Reach::loopbackIPv4;
        return options;
    }

    void turn() { test::VirtualClock::settle(io); }
};

/// A peer whose end leaves nothing behind in the system, millions of times.
class Peer {
  public:
    explicit Peer(Port& port) : port_(port), socket_(port.io) {
        socket_.connect({asio::ip::address_v4::loopback(), port.listener.port()});
        socket_.set_option(asio::socket_base::linger(true, 0));
        socket_.non_blocking(true);
    }

    void write(std::string_view bytes) {
        boost::system::error_code error;
        for (int turns = 0; !bytes.empty() && !error && turns < mostTurns; ++turns) {
            const auto size = socket_.write_some(asio::buffer(bytes), error);
            bytes.remove_prefix(size);
            if (error == asio::error::would_block) error.clear();
            port_.turn();
        }
        socket_.shutdown(tcp::socket::shutdown_send, error);
    }

    /// What comes until the other side has nothing more to say, or has accepted.
    std::string read() {
        std::string answer;
        std::array<char, 4096> piece;
        boost::system::error_code error;
        for (int turns = 0; turns < mostTurns && !port_.accepted; ++turns) {
            port_.turn();
            const auto size = socket_.read_some(asio::buffer(piece), error);
            answer.append(piece.data(), size);
            if (error && error != asio::error::would_block) return answer;
        }
        require(port_.accepted != nullptr, "every request has its end");
        return answer;
    }

  private:
    Port& port_;
    tcp::socket socket_;
};

} // namespace

void requestHead(std::string_view bytes) {
    static Port port;
    {
        Peer peer(port);
        peer.write(bytes);
        const auto answer = peer.read();
        const bool isRefusal =
            answer.starts_with("HTTP/1.1 4") && answer.find("\r\n\r\n") != std::string::npos;
        require(port.accepted || answer.empty() || isRefusal, "a request is granted, refused or passed over");
    }
    if (port.accepted) port.accepted->cancel();
    port.accepted.reset();
    port.clock.advance(port.io, std::chrono::minutes(1));
}

} // namespace tarnly::fuzz
