#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {

/// What a server needs of the head of an HTTP request.
struct HttpRequestHead {
    /// Without its body.
    HttpRequest request;
    bool isWebSocketUpgrade = false;
    bool keepsAlive = false;
    /// Bytes of body that follow.
    std::size_t contentLength = 0;
};

/// Reads a request head up to and with the empty line. Absent when it is none, or one whose body has no known
/// length.
std::optional<HttpRequestHead> parseRequestHead(std::string_view head);

/// The response as it goes over the wire.
std::string formatResponse(const HttpResponse& response, bool keepsAlive);

} // namespace tarnly
