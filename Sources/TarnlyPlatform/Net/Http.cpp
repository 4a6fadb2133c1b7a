#include "TarnlyPlatform/Net/Http.hpp"

#include <algorithm>

namespace tarnly {

std::string describe(const Endpoint& endpoint) {
    const bool isIPv6 = endpoint.host.find(':') != std::string::npos;
    const auto host = isIPv6 ? "[" + endpoint.host + "]" : endpoint.host;
    return host + ":" + std::to_string(endpoint.port);
}

bool isHost(std::string_view host) {
    constexpr std::string_view delimiters = " \"#/<>?@[\\]^`{|}\x7F";
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    return !host.empty() && host.find_first_of(delimiters) == host.npos &&
           std::ranges::none_of(host, isControl);
}

} // namespace tarnly
