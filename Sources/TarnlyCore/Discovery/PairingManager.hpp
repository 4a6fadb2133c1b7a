#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>

#include "TarnlyPlatform/Base/Guarded.hpp"

namespace tarnly {

/// The answer to one attempt to pair: a token when accepted, a reason when refused.
struct PairResult {
    bool accepted = false;
    std::optional<std::string> sessionToken;
    std::optional<std::string> reason;

    static PairResult ok(std::string token);
    static PairResult fail(std::string reason);

    bool operator==(const PairResult&) const = default;
};

/// Decides who may use the companion: keeps the pairing password and the session tokens that were issued.
///
/// One per host, shared by all sessions. Safe from any thread.
class PairingManager {
  public:
    /// An absent or empty password leaves pairing open to everybody.
    explicit PairingManager(std::optional<std::string> password);

    bool requiresPairing() const;

    /// Counts from the next attempt on: tokens stay valid while their sessions live, sessions that are paired
    /// stay paired.
    void setPassword(std::optional<std::string> password);

    /// Passwords compare by Unicode canonical equivalence; letter case counts. How long that takes does not
    /// tell where they differ. Every accepted attempt gets a token of its own: 24 random bytes in base64, 32
    /// characters.
    PairResult attempt(const std::optional<std::string>& suppliedPassword);

    /// In bytes. What is longer is never right, whatever the password: how long comparing takes shall not
    /// tell.
    static constexpr std::size_t longestPassword = 4096;

    bool isValidToken(const std::string& token) const;

    /// The session of the token has ended, or has another one.
    void revoke(const std::string& token);

  private:
    struct State {
        std::optional<std::string> password;
        std::set<std::string> issuedTokens;
    };

    bool isRight(const std::optional<std::string>& suppliedPassword) const;

    Guarded<State> state_;
};

} // namespace tarnly
