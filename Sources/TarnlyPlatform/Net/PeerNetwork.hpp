#pragma once

#include <boost/asio/ip/address.hpp>
#include <compare>
#include <string>

namespace tarnly {

/// Where a peer comes from, as far as limits are concerned: an IPv4 address, also one in the clothes of IPv6,
/// or the first 64 bits of an IPv6 address, which is the least that one household has. The many addresses by
/// which this computer reaches itself are one. A plain value.
class PeerNetwork {
  public:
    /// Somewhere unknown, which is a place like others.
    PeerNetwork() = default;
    explicit PeerNetwork(const boost::asio::ip::address& address);

    /// This computer itself.
    bool isLoopback() const { return address_.is_loopback(); }

    /// "192.168.1.20", "2001:db8:0:1::".
    std::string text() const { return address_.to_string(); }

    std::strong_ordering operator<=>(const PeerNetwork&) const = default;

  private:
    boost::asio::ip::address address_;
};

} // namespace tarnly
