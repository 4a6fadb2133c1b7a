#include "TarnlyXPlane/Link/LinkFailure.hpp"

#include <string>

namespace tarnly {
namespace {

using Case = NetworkError::Case;
using Kind = SimulatorStage::Kind;

SimulatorStage stageOf(Kind kind, std::string detail = {}) {
    SimulatorStage stage;
    stage.kind = kind;
    stage.detail = std::move(detail);
    return stage;
}

NetworkError withCure(const NetworkError& error, const std::string& cure) {
    return cure.empty() ? error : NetworkError(error.which(), error.payload() + ": " + cure);
}

} // namespace

LinkFailure failureOfConnecting(const NetworkError& error) {
    if (error.which() == Case::timedOut) return {error, stageOf(Kind::silent)};
    const bool isAnswered = error.which() == Case::invalidResponse;
    auto stage = stageOf(Kind::notRunning, isAnswered ? "something else answers on its port" : "");
    const bool isUnknownHost = error.payload().find("Host not found") != std::string::npos;
    const bool isConnecting = error.which() == Case::connectionFailed;
    std::string cure;
    if (isConnecting) cure = isUnknownHost ? "check the simulator's address" : stageAdvice(stage);
    const auto told = withCure(error, cure);
    return {told, std::move(stage)};
}

LinkFailure refusal(const std::string& what, const std::string& message) {
    auto stage = stageOf(Kind::refusing, message);
    const auto detail = message.empty() ? std::string() : ": " + message;
    const NetworkError error(Case::connectionFailed, what + detail);
    const auto told = withCure(error, stageAdvice(stage));
    return {told, std::move(stage)};
}

LinkFailure tooOld(const NetworkError& error, const std::string& version) {
    auto stage = stageOf(Kind::tooOld, version);
    const auto told = withCure(error, stageAdvice(stage));
    return {told, std::move(stage)};
}

} // namespace tarnly
