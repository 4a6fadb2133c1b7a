#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/TcpAcceptor.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly::simulator {

/// A web server on a port of the loopback address (IPv4): answers HTTP requests, of which several may follow
/// each other on one connection, and hands over the connections that have become WebSockets.
///
/// A request's head may be 16 KiB long, its body 1 MiB, and it has 10 seconds to arrive; whoever takes longer
/// is dropped. Belongs to the thread that runs its executor.
class ApiServer {
  public:
    /// Answers a request. Absent lets a WebSocket upgrade go ahead, and refuses a plain request with status
    /// 426. `isUpgrade` says which of the two the request is. It may take as long as it likes.
    using RequestHandler =
        std::function<Task<std::optional<HttpResponse>>(HttpRequest request, bool isUpgrade)>;

    using ConnectionHandler = std::function<void(std::shared_ptr<WebSocketConnection>)>;

    /// Listens at once; the system chooses the port if it is 0. Throws `NetworkError::listenFailed`, for
    /// example when the port is in use. `clock` must outlive all that runs on `executor`.
    ApiServer(boost::asio::any_io_executor executor, Clock& clock, std::uint16_t port,
              RequestHandler onRequest, ConnectionHandler onConnection);

    ApiServer(const ApiServer&) = delete;
    ApiServer& operator=(const ApiServer&) = delete;

    /// Cancels.
    ~ApiServer();

    std::uint16_t port() const;

    /// Frees the port, and drops who has not become a WebSocket yet; those that were handed over live on.
    /// Harmless when repeated.
    void cancel();

  private:
    struct State;
    const std::shared_ptr<State> state_;
    TcpAcceptor acceptor_;
};

} // namespace tarnly::simulator
