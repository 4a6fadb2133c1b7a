#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnly {

/// One address of one network interface.
struct InterfaceAddress {
    std::string interface;
    /// A literal IPv4 or IPv6 address.
    std::string address;
    /// Switched on, and with a carrier.
    bool isRunning = true;
    bool isLoopback = false;
    /// A device of its own, rather than a bridge, a tunnel or the like.
    bool isPhysical = true;
};

/// What the system tells of this computer's interfaces, in its order; nothing where it does not tell.
std::vector<InterfaceAddress> interfaceAddresses();

/// Those of `addresses` under which other computers may reach this one, the likelier ones first: physical
/// interfaces before virtual ones, IPv4 before IPv6 within an interface, else as they come. Addresses for one
/// link only are left out; those of IPv4 stand where there are no others.
std::vector<std::string> reachableAddresses(const std::vector<InterfaceAddress>& addresses);

/// The `reachableAddresses` that this computer has now; none where the system does not tell. May be called
/// from any thread.
std::vector<std::string> networkAddresses();

/// The computer's host name; "localhost" where the system has none.
std::string hostName();

/// Where a WebSocket server listens: "ws://192.168.1.20:41234", "ws://[2001:db8::1]:41234".
std::string webSocketUrl(const std::string& address, std::uint16_t port);

/// What a browser opens there: "http://192.168.1.20:41234/", "http://[2001:db8::1]:41234/".
std::string webPageUrl(const std::string& address, std::uint16_t port);

} // namespace tarnly
