#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <memory>
#include <string>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly {

/// Finishes the server's side of the opening handshake. `upgrade` is the peer's request for it, `received`
/// what has already been read behind its head. Absent when the peer does not go through with it. `clock` must
/// outlive the connection.
Task<std::shared_ptr<WebSocketConnection>> acceptWebSocket(boost::asio::ip::tcp::socket socket, Clock& clock,
                                                           HttpRequest upgrade, std::string received);

} // namespace tarnly
