#pragma once

#include <cstdint>
#include <system_error>

#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {

/// `NetworkError::listenFailed` of a port, for example of one that is in use. `told` is what `what` says,
/// with its parts.
class ListenError : public NetworkError {
  public:
    ListenError(std::uint16_t port, const std::error_code& why)
        : NetworkError(Case::listenFailed, "port " + std::to_string(port) + ": " + why.message()),
          told_(Phrase::of("listenFailed(\"port %1: %2\")", std::to_string(port), why.message())) {}

    const Phrase& told() const noexcept { return told_; }

  private:
    Phrase told_;
};

} // namespace tarnly
