#pragma once

#include <stdexcept>
#include <string>

namespace tarnly {

/// What an operation of `XPlaneBackend` fails with, besides failures of the network.
///
/// `what()` is what the client is told: the case name followed by the payload in parentheses and quotes, for
/// example `unknownDataref("sim/x")`.
class XPlaneBackendError : public std::runtime_error {
  public:
    /// In parentheses what the payload names.
    enum class Case {
        unknownDataref,                   ///< absent from the catalogue (the dataref)
        unknownCommand,                   ///< absent from the catalogue (the command)
        commandFailed,                    ///< refused by the simulator (the command)
        timeout,                          ///< no value came in time (the dataref)
        flightNotFound,                   ///< no such file (its path)
        notImplemented,                   ///< for a backend that lacks an operation (the operation)
        situationsDirectoryNotConfigured, ///< (no payload)
    };

    explicit XPlaneBackendError(Case which, const std::string& payload = {});

    Case which() const noexcept { return which_; }
    const std::string& payload() const noexcept { return payload_; }

    bool operator==(const XPlaneBackendError& other) const {
        return which_ == other.which_ && payload_ == other.payload_;
    }

  private:
    Case which_;
    std::string payload_;
};

} // namespace tarnly
