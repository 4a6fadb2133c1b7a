#include "TarnlyXPlane/Link/LinkFailure.hpp"

#include <string>

namespace tarnly {
namespace {

using Case = NetworkError::Case;
using Kind = SimulatorStage::Kind;

SimulatorStage stageOf(Kind kind, Phrase detail = {}) {
    SimulatorStage stage;
    stage.kind = kind;
    stage.detail = std::move(detail);
    return stage;
}

NetworkError with(const NetworkError& error, const std::string& words) {
    return words.empty() ? error : NetworkError(error.which(), error.payload() + ": " + words);
}

/// What a stage is called by people, and the cure: who sees a failure may have only a tablet.
std::string causeAndCure(Kind kind) {
    std::string cause;
    if (kind == Kind::notRunning) cause = "the simulator is not running: ";
    if (kind == Kind::refusing) cause = "the simulator refuses connections: ";
    if (kind == Kind::tooOld) cause = "the simulator is too old: ";
    return cause + stageAdvice(stageOf(kind)).text();
}

} // namespace

LinkFailure failureOfConnecting(const NetworkError& error) {
    if (error.which() == Case::timedOut) return {error, stageOf(Kind::silent)};
    const bool isAnswered = error.which() == Case::invalidResponse;
    auto stage =
        stageOf(Kind::notRunning, isAnswered ? Phrase::of("something else answers on its port") : Phrase());
    const bool isUnknownHost = error.payload().find("Host not found") != std::string::npos;
    const bool isConnecting = error.which() == Case::connectionFailed;
    std::string words;
    if (isConnecting)
        words = isUnknownHost ? "check the simulator's address" : causeAndCure(Kind::notRunning);
    const auto told = with(error, words);
    return {told, std::move(stage)};
}

LinkFailure refusal(const std::string& what, const std::string& message) {
    auto stage = stageOf(Kind::refusing, Phrase::verbatim(message));
    const auto detail = message.empty() ? std::string() : ": " + message;
    const NetworkError error(Case::connectionFailed, what + detail);
    const auto told = with(error, causeAndCure(Kind::refusing));
    return {told, std::move(stage)};
}

LinkFailure tooOld(const NetworkError& error, const std::string& version) {
    auto stage = stageOf(Kind::tooOld, Phrase::verbatim(version));
    const auto told = with(error, causeAndCure(Kind::tooOld));
    return {told, std::move(stage)};
}

} // namespace tarnly
