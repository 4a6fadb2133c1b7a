#include "TarnlyPlatform/Net/BrowserGate.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using Headers = std::vector<std::pair<std::string, std::string>>;

struct BrowserGateTest : testing::Test {
    BrowserGate gate{"Rig42", {WebOrigin{"https", "example.com", 443}}};

    bool passes(Headers headers, bool isUpgrade = true) const {
        HttpRequest request;
        request.headers = std::move(headers);
        return !gate.refusalOf(request, isUpgrade);
    }
};

TEST_F(BrowserGateTest, TheHostMustNameThisComputer) {
    for (const char* host : {"127.0.0.1:41234", "192.168.1.20", "[::1]:41234", "[2001:db8::1]", "localhost",
                             "LocalHost:80", "rig42:41234", "RIG42.", "rig42.local:41234", "other.local"})
        EXPECT_TRUE(passes({{"host", host}})) << host;
    for (const char* host : {"", "example.com", "127.0.0.1.example.com", "rig42.example.com", "local",
                             "notlocalhost", "localhost.example.com", "rig42local", "rig42:port", "x"})
        EXPECT_FALSE(passes({{"Host", host}})) << host;
}

TEST_F(BrowserGateTest, TheHostMustBeNamedOnce) {
    EXPECT_FALSE(passes({}));
    EXPECT_FALSE(passes({{"Host", "localhost"}, {"HOST", "localhost"}}));
}

TEST_F(BrowserGateTest, TheHostIsAskedForWhateverTheRequest) {
    EXPECT_FALSE(passes({{"Host", "example.com"}}, false));
    EXPECT_TRUE(passes({{"Host", "localhost"}}, false));
}

TEST_F(BrowserGateTest, PagesOfThisVeryPortPass) {
    const auto opens = [&](const char* host, const char* origin) {
        return passes({{"Host", host}, {"Origin", origin}});
    };
    EXPECT_TRUE(opens("127.0.0.1:41234", "http://127.0.0.1:41234"));
    EXPECT_TRUE(opens("rig42.local:41234", "https://RIG42.local:41234"));
    EXPECT_TRUE(opens("[::1]:41234", "http://[0:0:0:0:0:0:0:1]:41234"));
    EXPECT_TRUE(opens("localhost", "http://localhost"));
    EXPECT_TRUE(opens("localhost:80", "http://localhost"));
    EXPECT_TRUE(opens("localhost:443", "https://localhost"));
    EXPECT_FALSE(opens("localhost", "https://localhost"));
    EXPECT_FALSE(opens("localhost:41234", "http://localhost"));
    EXPECT_FALSE(opens("localhost:41234", "http://localhost:41235"));
    EXPECT_FALSE(opens("localhost:41234", "http://127.0.0.1:41234"));
    EXPECT_FALSE(opens("localhost:41234", "http://localhost.example.com:41234"));
    EXPECT_FALSE(opens("localhost:41234", "null"));
    EXPECT_FALSE(opens("localhost:41234", ""));
    EXPECT_FALSE(opens("localhost:41234", "localhost:41234"));
}

TEST_F(BrowserGateTest, AnOriginIsNamedOnce) {
    EXPECT_FALSE(
        passes({{"Host", "localhost"}, {"Origin", "http://localhost"}, {"origin", "http://localhost"}}));
}

TEST_F(BrowserGateTest, AllowedOriginsPass) {
    const auto opens = [&](const char* origin) {
        return passes({{"Host", "192.168.1.20:41234"}, {"Origin", origin}});
    };
    EXPECT_TRUE(opens("https://example.com"));
    EXPECT_TRUE(opens("https://EXAMPLE.com:443"));
    EXPECT_FALSE(opens("http://example.com"));
    EXPECT_FALSE(opens("https://example.com:8443"));
    EXPECT_FALSE(opens("https://sub.example.com"));
}

TEST_F(BrowserGateTest, WhoOpensNoWebSocketNeedsNoOrigin) {
    EXPECT_TRUE(passes({{"Host", "localhost"}, {"Origin", "http://example.org"}}, false));
}

TEST_F(BrowserGateTest, ARefusalNamesTheCure) {
    HttpRequest request;
    request.headers = {{"Host", "localhost"}, {"Origin", "http://example.org"}};
    EXPECT_NE(gate.refusalOf(request, true)->find("--allow-origin"), std::string::npos);
}

} // namespace
} // namespace tarnly
