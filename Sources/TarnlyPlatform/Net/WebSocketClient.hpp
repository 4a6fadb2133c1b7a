#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <memory>
#include <string>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly {

/// Opens a WebSocket to ws://host:port + target, and returns at once.
///
/// Resolving, connecting and the handshake go on behind the result: what is sent meanwhile waits in the
/// queue. When they fail, the connection has ended: `receive` answers absent, `drained` throws, `failure`
/// says why. `clock` must outlive the connection.
std::shared_ptr<WebSocketConnection> openWebSocket(boost::asio::any_io_executor executor, Clock& clock,
                                                   Endpoint endpoint, std::string target);

} // namespace tarnly
