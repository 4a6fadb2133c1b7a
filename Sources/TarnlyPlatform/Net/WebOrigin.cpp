#include "TarnlyPlatform/Net/WebOrigin.hpp"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <charconv>

#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {
namespace {

constexpr std::uint16_t plainPort = 80;
constexpr std::uint16_t securePort = 443;

std::string lowerCased(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char letter) {
        const bool isUpper = letter >= 'A' && letter <= 'Z';
        return isUpper ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return result;
}

bool isScheme(std::string_view text) {
    const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto isOther = [](char c) { return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'; };
    return !text.empty() && isLetter(text.front()) &&
           std::ranges::all_of(text, [&](char c) { return isLetter(c) || isOther(c); });
}

/// Digits alone, as no port has a sign.
std::optional<std::uint16_t> parsePort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return port;
}

/// In IPv6's form for browsers the zone of an address begins with "%25" (RFC 6874).
std::string withPlainZone(std::string_view address) {
    constexpr std::string_view escaped = "%25";
    std::string result(address);
    const auto at = result.find(escaped);
    if (at != result.npos) result.replace(at, escaped.size(), "%");
    return result;
}

std::optional<WebAuthority> parseBracketed(std::string_view text) {
    const auto end = text.find(']');
    if (end == text.npos) return std::nullopt;
    boost::system::error_code error;
    const auto address = boost::asio::ip::make_address_v6(withPlainZone(text.substr(1, end - 1)), error);
    if (error) return std::nullopt;
    WebAuthority authority{address.to_string(), std::nullopt, true};
    const auto rest = text.substr(end + 1);
    if (rest.empty() || rest == ":") return authority;
    if (rest.front() == ':') authority.port = parsePort(rest.substr(1));
    return authority.port ? std::optional(authority) : std::nullopt;
}

} // namespace

std::optional<WebAuthority> WebAuthority::parse(std::string_view text) {
    if (text.starts_with('[')) return parseBracketed(text);
    const auto colon = text.find(':');
    auto host = lowerCased(text.substr(0, colon));
    if (host.ends_with('.')) host.pop_back();
    if (!isHost(host)) return std::nullopt;
    boost::system::error_code isName;
    const auto address = boost::asio::ip::make_address_v4(host, isName);
    WebAuthority authority{isName ? host : address.to_string(), std::nullopt, !isName};
    if (colon == text.npos || colon + 1 == text.size()) return authority;
    authority.port = parsePort(text.substr(colon + 1));
    return authority.port ? std::optional(authority) : std::nullopt;
}

std::optional<WebOrigin> WebOrigin::parse(std::string_view text) {
    constexpr std::string_view separator = "://";
    const auto end = text.find(separator);
    if (end == text.npos) return std::nullopt;
    auto scheme = lowerCased(text.substr(0, end));
    auto authority = WebAuthority::parse(text.substr(end + separator.size()));
    if (!isScheme(scheme) || !authority) return std::nullopt;
    const bool isSecure = scheme == "https" || scheme == "wss";
    const auto port = authority->port.value_or(isSecure ? securePort : plainPort);
    return WebOrigin{std::move(scheme), std::move(authority->host), port};
}

std::string WebOrigin::text() const { return scheme + "://" + describe({host, port}); }

} // namespace tarnly
