#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Net/Admission.hpp"
#include "TarnlyPlatform/Net/BrowserGate.hpp"
#include "TarnlyPlatform/Net/PeerNetwork.hpp"
#include "TarnlyPlatform/Net/TcpAcceptor.hpp"
#include "TarnlyPlatform/Net/WebPages.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"
#include "TarnlyPlatform/Net/WebSocketLimits.hpp"

namespace tarnly {

/// Accepts TCP connections on one port, IPv4 and IPv6, and hands over those that have become WebSockets.
///
/// Accepting goes on through every error: out of file descriptors it waits and tries again. A peer that does
/// not finish the head of its opening request in 10 seconds, or within 16 KiB, is dropped. One that asks for
/// a page gets that, or 404 and 405; where there are no pages, 426. It is hung up on then, as is one that
/// says what is no request at all (400), one that the gate keeps out (403), and one for whom there is no room
/// (503). Belongs to the network thread.
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
        /// For who asks for no WebSocket; null: this port has no pages.
        std::shared_ptr<const WebPages> pages{};
        /// Somebody, not this computer itself, has asked for a page and gets it. May be empty.
        std::function<void(const PeerNetwork&)> onPageVisit{};
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

    /// For requests from now on.
    void useGate(BrowserGate gate);

    /// Stops accepting, and drops who has not become a WebSocket yet; connections that were handed over live
    /// on. Harmless when repeated.
    void cancel();

  private:
    struct State;
    const std::shared_ptr<State> state_;
    TcpAcceptor acceptor_;
};

} // namespace tarnly
