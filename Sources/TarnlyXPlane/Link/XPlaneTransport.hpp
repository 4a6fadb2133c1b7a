#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly {

/// The ways to the simulator, as an interface so that tests need no sockets. Used on the network thread only.
class XPlaneTransport {
  public:
    virtual ~XPlaneTransport() = default;

    /// One HTTP exchange: the response, whatever its status. Throws `NetworkError`, and what `onceConnected`
    /// throws, which may be null (see `fetchHttp`).
    virtual Task<HttpResponse> fetch(Endpoint endpoint, HttpRequest request,
                                     std::chrono::milliseconds timeout, OnceConnected onceConnected) = 0;

    /// Returns at once; what is sent before the handshake is done waits in the connection's queue.
    virtual std::shared_ptr<WebSocketConnection> openWebSocket(Endpoint endpoint, std::string target) = 0;

    /// Returns when the datagram has been handed to the network. Throws `NetworkError`.
    virtual Task<> sendDatagram(Endpoint endpoint, std::vector<std::byte> bytes) = 0;
};

/// The transport over real sockets, which live on `executor`, that of the network thread. `clock` must
/// outlive all that runs there.
std::shared_ptr<XPlaneTransport> makeNetworkTransport(boost::asio::any_io_executor executor, Clock& clock);

} // namespace tarnly
