#pragma once

#include <string>
#include <utility>

#include "TarnlyCore/Flight/SimulatorStage.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {

/// Why a link could not be had, with what that shows of the simulator.
class LinkFailure : public NetworkError {
  public:
    LinkFailure(const NetworkError& error, SimulatorStage stage)
        : NetworkError(error), stage_(std::move(stage)) {}

    const SimulatorStage& stage() const noexcept { return stage_; }

  private:
    SimulatorStage stage_;
};

/// The link has ended, and nothing of the request has gone out, or nothing that would do harm a second time:
/// the next link may do.
class LinkEnded : public NetworkError {
  public:
    using NetworkError::NetworkError;
    explicit LinkEnded(const NetworkError& error) : NetworkError(error) {}
};

/// `error` and what it shows of the simulator, with cause and cure in the text where they are known. To be
/// given failures of connecting, of whatever step.
LinkFailure failureOfConnecting(const NetworkError& error);

/// The simulator answers, and lets nobody in: `what` names who, `message` is its own.
LinkFailure refusal(const std::string& what, const std::string& message);

/// What answers has no web API that serves. `version` may be empty.
LinkFailure tooOld(const NetworkError& error, const std::string& version);

} // namespace tarnly
