#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnly {

/// Where a server listens.
struct Endpoint {
    /// A host name or a literal IPv4 or IPv6 address, the latter without brackets.
    std::string host;
    std::uint16_t port = 0;

    bool operator==(const Endpoint&) const = default;
};

/// "host:port", with an IPv6 address in brackets.
std::string describe(const Endpoint& endpoint);

/// Whether `host` can stand in a URL: not empty, and without the characters that delimit its parts.
bool isHost(std::string_view host);

struct HttpRequest {
    std::string method = "GET";
    /// The path with the query, beginning with "/".
    std::string target = "/";
    /// Names and values. On sending, Host, Connection and Content-Length are added.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
};

/// Of RFC 9110, section 15.
namespace httpStatus {
inline constexpr unsigned ok = 200;
inline constexpr unsigned forbidden = 403;
inline constexpr unsigned notFound = 404;
} // namespace httpStatus

struct HttpResponse {
    unsigned status = httpStatus::ok;
    std::string contentType;
    std::string body;
};

} // namespace tarnly
