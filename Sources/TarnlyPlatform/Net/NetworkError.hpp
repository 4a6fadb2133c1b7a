#pragma once

#include "TarnlyPlatform/Base/Error.hpp"

namespace tarnly {

/// A failure of the network or of a peer that does not keep to its protocol.
struct NetworkErrorCases {
    enum class Case {
        listenFailed,
        connectionFailed,
        connectionClosed,
        timedOut,
        invalidResponse,
        sendFailed
    };
    static constexpr std::array<std::string_view, 6> names{
        "listenFailed", "connectionFailed", "connectionClosed", "timedOut", "invalidResponse", "sendFailed"};
};
using NetworkError = Error<NetworkErrorCases>;

} // namespace tarnly
