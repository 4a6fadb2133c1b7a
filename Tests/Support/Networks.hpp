#pragma once

#include <boost/asio/ip/address.hpp>

#include "TarnlyPlatform/Net/PeerNetwork.hpp"

namespace tarnly::test {

/// That of an address as people write it.
inline PeerNetwork networkOf(const char* address) {
    return PeerNetwork(boost::asio::ip::make_address(address));
}

} // namespace tarnly::test
