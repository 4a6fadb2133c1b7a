#pragma once

#include <boost/asio/ip/tcp.hpp>

namespace tarnly {

/// Prepares a connection for small messages that shall not wait, and has a peer that vanished without a word,
/// as a tablet does that leaves the Wi-Fi, noticed within a minute. A connection can do without: nothing here
/// fails.
void setConversationOptions(boost::asio::ip::tcp::socket& socket);

} // namespace tarnly
