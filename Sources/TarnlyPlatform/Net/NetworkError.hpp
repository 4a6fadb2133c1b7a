#pragma once

#include <stdexcept>
#include <string>

namespace tarnly {

/// A failure of the network or of a peer that does not keep to its protocol.
///
/// `what()` is the case name followed by the detail in parentheses and quotes, for example
/// `connectionFailed("127.0.0.1:8086: Connection refused")`.
class NetworkError : public std::runtime_error {
  public:
    enum class Case {
        listenFailed,
        connectionFailed,
        connectionClosed,
        timedOut,
        invalidResponse,
        sendFailed
    };

    NetworkError(Case which, const std::string& detail);

    Case which() const noexcept { return which_; }

  private:
    Case which_;
};

} // namespace tarnly
