#include "TarnlyPlatform/Http.hpp"

namespace tarnly {

std::string describe(const Endpoint& endpoint) {
    const bool isIPv6 = endpoint.host.find(':') != std::string::npos;
    const auto host = isIPv6 ? "[" + endpoint.host + "]" : endpoint.host;
    return host + ":" + std::to_string(endpoint.port);
}

} // namespace tarnly
