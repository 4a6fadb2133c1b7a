#include "TarnlyPlatform/Net/BrowserGate.hpp"

#include <algorithm>
#include <boost/beast/core/string.hpp>
#include <string_view>
#include <utility>

namespace tarnly {
namespace {

/// Of an authority without one: the port speaks HTTP, whatever the page was loaded by.
constexpr std::uint16_t defaultPort = 80;

std::vector<std::string_view> headersOf(const HttpRequest& request, std::string_view name) {
    std::vector<std::string_view> values;
    for (const auto& [key, value] : request.headers) {
        if (boost::beast::iequals(key, name)) values.emplace_back(value);
    }
    return values;
}

} // namespace

BrowserGate::BrowserGate(std::string hostName, std::vector<WebOrigin> allowedOrigins)
    : own_(WebAuthority::parse(hostName).value_or(WebAuthority())),
      allowedOrigins_(std::move(allowedOrigins)) {}

std::optional<std::string> BrowserGate::refusalOf(const HttpRequest& request, bool isUpgrade) const {
    const auto hosts = headersOf(request, "Host");
    const auto host = hosts.size() == 1 ? WebAuthority::parse(hosts.front()) : std::nullopt;
    if (!host || !isOurs(*host)) {
        return "The header Host must name this computer once: by an IP address, as \"localhost\", by its "
               "host name, or by a name that ends in \".local\".";
    }
    if (isUpgrade && !mayOpen(request, *host)) {
        return "Web pages of other origins may not use this port. To let one in, start the companion with "
               "--allow-origin and the page's origin, for example --allow-origin https://example.com.";
    }
    return std::nullopt;
}

bool BrowserGate::isOurs(const WebAuthority& host) const {
    const auto& name = host.host;
    return host.isAddress || name == "localhost" || name.ends_with(".local") ||
           (!own_.host.empty() && name == own_.host);
}

bool BrowserGate::mayOpen(const HttpRequest& request, const WebAuthority& host) const {
    const auto origins = headersOf(request, "Origin");
    if (origins.empty()) return true;
    const auto origin = origins.size() == 1 ? WebOrigin::parse(origins.front()) : std::nullopt;
    if (!origin) return false;
    const bool isFromHere = origin->host == host.host && origin->port == host.port.value_or(defaultPort);
    return isFromHere || std::ranges::find(allowedOrigins_, *origin) != allowedOrigins_.end();
}

} // namespace tarnly
