#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <functional>
#include <memory>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// From where a port can be reached.
enum class Reach { everyInterface, loopbackIPv4 };

/// Accepts TCP connections on one port, and serves them side by side.
///
/// Accepting goes on through every error: out of descriptors or memory it waits and tries again. An exception
/// that leaves the serving of a peer costs that peer its connection. Belongs to the thread of its executor.
class TcpAcceptor {
  public:
    /// Not itself a coroutine with captures: it calls one and hands it what it needs.
    using Serve = std::function<Task<>(boost::asio::ip::tcp::socket socket)>;

    /// Listens at once; the system chooses the port if it is 0. Throws `NetworkError::listenFailed`, for
    /// example when the port is in use. `clock` must outlive all that runs on `executor`.
    TcpAcceptor(boost::asio::any_io_executor executor, Clock& clock, std::uint16_t port, Reach reach,
                Serve serve);

    TcpAcceptor(const TcpAcceptor&) = delete;
    TcpAcceptor& operator=(const TcpAcceptor&) = delete;

    /// Cancels.
    ~TcpAcceptor();

    std::uint16_t port() const;

    /// Frees the port, and tells the serving that is under way to end. Harmless when repeated.
    void cancel();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnly
