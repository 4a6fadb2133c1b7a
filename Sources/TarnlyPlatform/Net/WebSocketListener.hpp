#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Net/Admission.hpp"
#include "TarnlyPlatform/Net/BrowserGate.hpp"
#include "TarnlyPlatform/Net/TcpAcceptor.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"
#include "TarnlyPlatform/Net/WebSocketLimits.hpp"

namespace tarnly {

/// Accepts TCP connections on one port, IPv4 and IPv6, and hands over those that have become WebSockets.
///
/// Accepting goes on through every error: out of file descriptors it waits and tries again. A peer that does
/// not finish the head of its opening request in 10 seconds, or within 16 KiB, is dropped. One whose request
/// is not for a WebSocket is told so (status 426, or 400 when it is no request at all) and hung up on; so is
/// one that the gate keeps out (403), and one for whom there is no room (503). Belongs to the network thread.
class WebSocketListener {
  public:
    using ConnectionHandler = std::function<void(std::shared_ptr<WebSocketConnection>)>;

    struct Options {
        /// 0: a free port that the system chooses.
        std::uint16_t port = 0;
        Reach reach = Reach::everyInterface;
        /// For those that have become WebSockets.
        WebSocketLimits limits{};
        /// Null: nobody keeps count.
        std::shared_ptr<Admission> admission{};
        /// Absent: everybody may pass.
        std::optional<BrowserGate> gate{};
    };

    /// Listens at once. Throws `NetworkError::listenFailed`, for example when the port is in use.
    /// `clock` must outlive all that runs on `executor`.
    WebSocketListener(boost::asio::any_io_executor executor, Clock& clock, Options options,
                      ConnectionHandler onConnection);

    WebSocketListener(const WebSocketListener&) = delete;
    WebSocketListener& operator=(const WebSocketListener&) = delete;

    /// Cancels.
    ~WebSocketListener();

    std::uint16_t port() const;

    /// Stops accepting, and drops who has not become a WebSocket yet; connections that were handed over live
    /// on. Harmless when repeated.
    void cancel();

  private:
    struct State;
    const std::shared_ptr<State> state_;
    TcpAcceptor acceptor_;
};

} // namespace tarnly
