#include "TarnlyCore/Discovery/PairingManager.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace tarnly {
namespace {

using testing::MatchesRegex;

TEST(PairingManager, WithoutAPasswordEverybodyIsAccepted) {
    for (const auto& password : {std::optional<std::string>(), std::optional<std::string>("")}) {
        PairingManager pairing(password);
        EXPECT_FALSE(pairing.requiresPairing());
        EXPECT_TRUE(pairing.attempt(std::nullopt).accepted);
        EXPECT_TRUE(pairing.attempt("anything").accepted);
    }
}

TEST(PairingManager, TheRightPasswordIsAccepted) {
    PairingManager pairing("Secret");
    EXPECT_TRUE(pairing.requiresPairing());
    EXPECT_TRUE(pairing.attempt("Secret").accepted);
}

TEST(PairingManager, AnyOtherPasswordIsRefused) {
    PairingManager pairing("Secret");
    const PairResult refused{false, std::nullopt, "incorrect password"};
    EXPECT_EQ(pairing.attempt(std::nullopt), refused);
    EXPECT_EQ(pairing.attempt(""), refused);
    EXPECT_EQ(pairing.attempt("secret"), refused);
    EXPECT_EQ(pairing.attempt("Secret "), refused);
}

TEST(PairingManager, WhatIsTooLongIsNeverRight) {
    const std::string longest(PairingManager::longestPassword, 'x');
    EXPECT_TRUE(PairingManager(longest).attempt(longest).accepted);
    EXPECT_FALSE(PairingManager(longest + "x").attempt(longest + "x").accepted);
    EXPECT_TRUE(PairingManager(std::nullopt).attempt(longest + "x").accepted);
}

TEST(PairingManager, CanonicallyEquivalentPasswordsAreTheSame) {
    PairingManager pairing("caf\u00E9");
    EXPECT_TRUE(pairing.attempt("cafe\u0301").accepted);
}

TEST(PairingManager, EveryTokenIsNewAndStaysValid) {
    PairingManager pairing(std::nullopt);
    std::set<std::string> tokens;
    for (int i = 0; i < 100; ++i) {
        const auto result = pairing.attempt(std::nullopt);
        ASSERT_TRUE(result.sessionToken);
        EXPECT_FALSE(result.reason);
        EXPECT_THAT(*result.sessionToken, MatchesRegex("[A-Za-z0-9+/]{32}"));
        EXPECT_TRUE(tokens.insert(*result.sessionToken).second);
    }
    pairing.setPassword("new");
    for (const auto& token : tokens) {
        EXPECT_TRUE(pairing.isValidToken(token));
    }
    EXPECT_FALSE(pairing.isValidToken(""));
}

TEST(PairingManager, ARevokedTokenIsNoneAnyMore) {
    PairingManager pairing(std::nullopt);
    const auto kept = pairing.attempt(std::nullopt).sessionToken.value();
    const auto revoked = pairing.attempt(std::nullopt).sessionToken.value();
    pairing.revoke(revoked);
    pairing.revoke("");
    EXPECT_FALSE(pairing.isValidToken(revoked));
    EXPECT_TRUE(pairing.isValidToken(kept));
}

TEST(PairingManager, ANewPasswordCountsFromTheNextAttemptOn) {
    PairingManager pairing("old");
    pairing.setPassword("new");
    EXPECT_FALSE(pairing.attempt("old").accepted);
    EXPECT_TRUE(pairing.attempt("new").accepted);
    pairing.setPassword(std::nullopt);
    EXPECT_FALSE(pairing.requiresPairing());
    EXPECT_TRUE(pairing.attempt(std::nullopt).accepted);
}

} // namespace
} // namespace tarnly
