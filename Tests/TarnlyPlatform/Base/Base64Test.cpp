#include "TarnlyPlatform/Base/Text.hpp"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string_view>

#include "TarnlyPlatform/Base/SecureRandom.hpp"

namespace tarnly {
namespace {

std::string base64Of(std::string_view text) { return base64(std::as_bytes(std::span(text))); }

// The examples of RFC 4648, section 10.
TEST(Base64, EncodesWithPadding) {
    EXPECT_EQ(base64Of(""), "");
    EXPECT_EQ(base64Of("f"), "Zg==");
    EXPECT_EQ(base64Of("fo"), "Zm8=");
    EXPECT_EQ(base64Of("foo"), "Zm9v");
    EXPECT_EQ(base64Of("foob"), "Zm9vYg==");
    EXPECT_EQ(base64Of("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64Of("foobar"), "Zm9vYmFy");
}

TEST(Base64, UsesTheStandardAlphabet) { EXPECT_EQ(base64Of("\xFB\xEF\xBE\xFF\xFF\xFF"), "++++////"); }

TEST(SecureRandom, FillsEveryByteAndNeverRepeats) {
    std::set<std::array<std::byte, 24>> seen;
    for (int i = 0; i < 100; ++i) {
        std::array<std::byte, 24> bytes{};
        fillSecureRandom(bytes);
        EXPECT_TRUE(seen.insert(bytes).second);
    }
}

TEST(SecureRandom, FillsMoreThanTheSystemGivesAtOnce) {
    std::array<std::byte, 1000> bytes{};
    fillSecureRandom(bytes);
    const std::set<std::byte> distinctAtTheEnd(bytes.end() - 200, bytes.end());
    EXPECT_GT(distinctAtTheEnd.size(), 20U);
}

} // namespace
} // namespace tarnly
