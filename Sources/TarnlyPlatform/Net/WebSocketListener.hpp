#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly {

/// Accepts TCP connections on one port, IPv4 and IPv6, and hands over those that have become WebSockets.
///
/// Accepting goes on through every error: out of file descriptors it waits and tries again. A peer that does
/// not finish its opening request in 10 seconds is dropped. Belongs to the network thread.
class WebSocketListener {
  public:
    using ConnectionHandler = std::function<void(std::shared_ptr<WebSocketConnection>)>;

    /// Answers a request before anything else is done with it. Absent lets a WebSocket upgrade go ahead, and
    /// refuses a plain request with status 426. `isUpgrade` says which of the two the request is.
    using HttpHandler = std::function<Task<std::optional<HttpResponse>>(HttpRequest request, bool isUpgrade)>;

    enum class Reach { everyInterface, loopbackIPv4 };

    struct Options {
        /// 0: a free port that the system chooses.
        std::uint16_t port = 0;
        Reach reach = Reach::everyInterface;
        /// Without one, every plain request is answered with status 426.
        HttpHandler onRequest;
    };

    /// Listens at once. Throws `NetworkError::listenFailed`, for example when the port is in use.
    WebSocketListener(boost::asio::any_io_executor executor, Options options, ConnectionHandler onConnection);

    WebSocketListener(const WebSocketListener&) = delete;
    WebSocketListener& operator=(const WebSocketListener&) = delete;

    /// Cancels.
    ~WebSocketListener();

    std::uint16_t port() const;

    /// Stops accepting; connections that were handed over live on. Harmless when repeated.
    void cancel();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnly
