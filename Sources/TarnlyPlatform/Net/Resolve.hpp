#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/system/error_code.hpp>
#include <vector>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {

struct ResolvedTcp {
    boost::system::error_code error;
    std::vector<boost::asio::ip::tcp::endpoint> addresses;
};

/// The addresses of an endpoint. A literal address takes no detour over the system's resolver, which cannot
/// be interrupted.
Task<ResolvedTcp> resolveTcp(Endpoint endpoint);

} // namespace tarnly
