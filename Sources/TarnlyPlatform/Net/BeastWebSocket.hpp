#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <memory>
#include <string>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly {

/// Finishes the server's side of the opening handshake. `requestHead` is the peer's upgrade request up to and
/// with the empty line, `received` what has already been read behind it. Absent when the peer does not go
/// through with it.
Task<std::shared_ptr<WebSocketConnection>> acceptWebSocket(boost::asio::ip::tcp::socket socket,
                                                           std::string requestHead, std::string received);

} // namespace tarnly
