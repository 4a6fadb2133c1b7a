#include "TarnlyPlatform/Net/NetworkError.hpp"

#include "TarnlyPlatform/Base/TextualForm.hpp"

namespace tarnly {
namespace {

const char* name(NetworkError::Case which) {
    switch (which) {
        case NetworkError::Case::listenFailed:
            return "listenFailed";
        case NetworkError::Case::connectionFailed:
            return "connectionFailed";
        case NetworkError::Case::connectionClosed:
            return "connectionClosed";
        case NetworkError::Case::timedOut:
            return "timedOut";
        case NetworkError::Case::invalidResponse:
            return "invalidResponse";
        case NetworkError::Case::sendFailed:
            return "sendFailed";
    }
    return "networkError";
}

} // namespace

NetworkError::NetworkError(Case which, const std::string& detail)
    : std::runtime_error(errorText(name(which), detail)), which_(which) {}

} // namespace tarnly
