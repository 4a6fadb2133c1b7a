#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnly {

/// A host with a port, as URLs and the header Host name it. A plain value.
struct WebAuthority {
    /// In lower case, without brackets and without a dot at its end; a literal address in its usual form.
    std::string host;
    /// Absent where none is named.
    std::optional<std::uint16_t> port;
    bool isAddress = false;

    /// "rig.local", "192.168.1.20:41234", "[2001:db8::1]:41234"; absent for anything else.
    static std::optional<WebAuthority> parse(std::string_view text);

    bool operator==(const WebAuthority&) const = default;
};

/// From where a web page was loaded (RFC 6454). A plain value.
struct WebOrigin {
    /// In lower case.
    std::string scheme;
    std::string host;
    std::uint16_t port = 0;

    /// "https://rig.local", "http://192.168.1.20:8080"; absent for anything else, "null" too. Without a port
    /// it is 443 for "https" and "wss", 80 for others.
    static std::optional<WebOrigin> parse(std::string_view text);

    /// With its port in any case: "https://rig.local:443".
    std::string text() const;

    bool operator==(const WebOrigin&) const = default;
};

} // namespace tarnly
