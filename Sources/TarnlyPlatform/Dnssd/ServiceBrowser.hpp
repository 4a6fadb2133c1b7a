#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tarnly {

/// A service found by DNS-SD, resolved to one address.
struct FoundService {
    std::string name;
    std::string hostName;
    /// A literal address. An IPv6 link-local one carries its scope: "fe80::1%eth0".
    std::string address;
    std::uint16_t port = 0;
    /// Of a key given twice the first value counts (RFC 6763, section 6.4).
    std::map<std::string, std::string> txt;
};

/// Looks for services of `type` (for example "_http._tcp") through the system's DNS-SD daemon, and returns
/// the distinct ones by name, sorted; where a service has addresses of both families, IPv4 wins.
///
/// Blocks for `patience` at most, and less when the daemon says that it has told all it knows or when
/// `enough`, called with what has been found so far, answers true. A daemon that hangs may add to that.
/// Throws `std::runtime_error` with a text for the person when there is no daemon. Safe from any thread.
std::vector<FoundService> browseServices(
    const std::string& type, std::chrono::milliseconds patience,
    const std::function<bool(const std::vector<FoundService>&)>& enough = {});

} // namespace tarnly
