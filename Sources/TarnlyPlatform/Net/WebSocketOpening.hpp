#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <memory>
#include <string>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Net/Admission.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"
#include "TarnlyPlatform/Net/WebSocketLimits.hpp"

/// How a WebSocket begins, on either side (RFC 6455, section 4).
namespace tarnly {

/// Opens a WebSocket to ws://host:port + target, and returns at once.
///
/// Resolving, connecting and the handshake go on behind the result: what is sent meanwhile waits in the
/// queue. When they fail, the connection has ended: `receive` answers absent, `drained` throws, `failure`
/// says why. `clock` must outlive the connection.
std::shared_ptr<WebSocketConnection> openWebSocket(boost::asio::any_io_executor executor, Clock& clock,
                                                   Endpoint endpoint, std::string target,
                                                   const WebSocketLimits& limits = {});

/// Finishes the server's side of the opening handshake, without waiting. `upgrade` is the peer's request for
/// it, `received` what has already been read behind its head. Null when the request is not one that can be
/// granted; the peer has been told why. `clock` must outlive the connection. `visit` is the peer's, or null.
std::shared_ptr<WebSocketConnection> acceptWebSocket(boost::asio::ip::tcp::socket socket, Clock& clock,
                                                     const HttpRequest& upgrade, std::string received,
                                                     const WebSocketLimits& limits = {},
                                                     std::shared_ptr<Visit> visit = nullptr);

} // namespace tarnly
