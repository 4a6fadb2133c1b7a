#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <memory>
#include <string>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

/// How a WebSocket begins, on either side.
namespace tarnly {

/// Opens a WebSocket to ws://host:port + target, and returns at once.
///
/// Resolving, connecting and the handshake go on behind the result: what is sent meanwhile waits in the
/// queue. When they fail, the connection has ended: `receive` answers absent, `drained` throws, `failure`
/// says why. `clock` must outlive the connection.
std::shared_ptr<WebSocketConnection> openWebSocket(boost::asio::any_io_executor executor, Clock& clock,
                                                   Endpoint endpoint, std::string target);

/// Finishes the server's side of the opening handshake. `upgrade` is the peer's request for it, `received`
/// what has already been read behind its head. Absent when the peer does not go through with it. `clock` must
/// outlive the connection.
Task<std::shared_ptr<WebSocketConnection>> acceptWebSocket(boost::asio::ip::tcp::socket socket, Clock& clock,
                                                           HttpRequest upgrade, std::string received);

} // namespace tarnly
