#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <memory>

#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

namespace tarnly {

/// The transport over real sockets, which live on `executor`, that of the network thread.
std::shared_ptr<XPlaneTransport> makeNetworkTransport(boost::asio::any_io_executor executor);

} // namespace tarnly
