#include "TarnlyCore/Discovery/PairingManager.hpp"

#include <array>
#include <cstddef>
#include <utility>

#include "TarnlyPlatform/Base/SecureRandom.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

std::string makeToken() {
    std::array<std::byte, 24> bytes{};
    fillSecureRandom(bytes);
    return base64(bytes);
}

bool isSet(const std::optional<std::string>& password) { return password && !password->empty(); }

} // namespace

PairResult PairResult::ok(std::string token) { return {true, std::move(token), std::nullopt}; }
PairResult PairResult::fail(std::string reason) { return {false, std::nullopt, std::move(reason)}; }

PairingManager::PairingManager(std::optional<std::string> password)
    : state_(State{std::move(password), {}}) {}

bool PairingManager::requiresPairing() const {
    return state_.with([](const State& state) { return isSet(state.password); });
}

void PairingManager::setPassword(std::optional<std::string> password) {
    state_.with([&](State& state) { state.password = std::move(password); });
}

PairResult PairingManager::attempt(const std::optional<std::string>& suppliedPassword) {
    if (!isRight(suppliedPassword)) return PairResult::fail("incorrect password");
    auto token = makeToken();
    state_.with([&](State& state) { state.issuedTokens.insert(token); });
    return PairResult::ok(std::move(token));
}

bool PairingManager::isRight(const std::optional<std::string>& suppliedPassword) const {
    const auto password = state_.with([](const State& state) { return state.password; });
    if (!isSet(password)) return true;
    return suppliedPassword && suppliedPassword->size() <= longestPassword &&
           canonicallyEqual(*suppliedPassword, *password);
}

bool PairingManager::isValidToken(const std::string& token) const {
    return state_.with([&](const State& state) { return state.issuedTokens.contains(token); });
}

void PairingManager::revoke(const std::string& token) {
    state_.with([&](State& state) { state.issuedTokens.erase(token); });
}

} // namespace tarnly
