#include "TarnlyPlatform/Net/PeerNetwork.hpp"

#include <algorithm>
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/address_v6.hpp>

namespace tarnly {
namespace {

namespace ip = boost::asio::ip;

constexpr std::ptrdiff_t networkBytes = 8;

ip::address networkOf(const ip::address& address) {
    if (address.is_loopback()) return ip::address_v4::loopback();
    if (!address.is_v6()) return address;
    const auto v6 = address.to_v6();
    if (v6.is_v4_mapped()) return networkOf(ip::make_address_v4(ip::v4_mapped, v6));
    auto bytes = v6.to_bytes();
    std::fill(bytes.begin() + networkBytes, bytes.end(), static_cast<unsigned char>(0));
    return ip::address_v6(bytes);
}

} // namespace

PeerNetwork::PeerNetwork(const ip::address& address) : address_(networkOf(address)) {}

} // namespace tarnly
