#include "TarnlyPlatform/Net/WebOrigin.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(WebAuthority, IsAHostWithOrWithoutAPort) {
    EXPECT_EQ(WebAuthority::parse("rig"), (WebAuthority{"rig", std::nullopt, false}));
    EXPECT_EQ(WebAuthority::parse("Rig.Local.:8080"), (WebAuthority{"rig.local", 8080, false}));
    EXPECT_EQ(WebAuthority::parse("rig:"), (WebAuthority{"rig", std::nullopt, false}));
    EXPECT_EQ(WebAuthority::parse("192.168.1.20:41234"), (WebAuthority{"192.168.1.20", 41234, true}));
    EXPECT_EQ(WebAuthority::parse("[::1]"), (WebAuthority{"::1", std::nullopt, true}));
    EXPECT_EQ(WebAuthority::parse("[2001:DB8:0:0::1]:80"), (WebAuthority{"2001:db8::1", 80, true}));
    EXPECT_TRUE(WebAuthority::parse("[fe80::1%25lo]:80"));
}

TEST(WebAuthority, IsNothingElse) {
    for (const char* text : {"", ":80", "rig:x", "rig:-1", "rig:+80", "rig:65536", "rig:80:80", "rig/", "a b",
                             "::1", "[::1", "[::1]x", "[::1]:x", "[rig]", "user@rig", "rig, rig"})
        EXPECT_FALSE(WebAuthority::parse(text)) << text;
}

TEST(WebAuthority, WhatOnlyLooksLikeAnAddressIsAName) {
    EXPECT_FALSE(WebAuthority::parse("127.0.0.1.evil.example")->isAddress);
    EXPECT_FALSE(WebAuthority::parse("1.2.3")->isAddress);
}

TEST(WebOrigin, HasTheDefaultPortOfItsScheme) {
    EXPECT_EQ(WebOrigin::parse("http://rig"), (WebOrigin{"http", "rig", 80}));
    EXPECT_EQ(WebOrigin::parse("HTTPS://Rig"), (WebOrigin{"https", "rig", 443}));
    EXPECT_EQ(WebOrigin::parse("https://rig:8443"), (WebOrigin{"https", "rig", 8443}));
    EXPECT_EQ(WebOrigin::parse("https://[::1]"), (WebOrigin{"https", "::1", 443}));
    EXPECT_EQ(WebOrigin::parse("https://[::1]")->text(), "https://[::1]:443");
}

TEST(WebOrigin, IsNothingElse) {
    for (const char* text :
         {"", "null", "rig", "://rig", "http://", "http://rig/", "1http://rig", "http:rig"})
        EXPECT_FALSE(WebOrigin::parse(text)) << text;
}

} // namespace
} // namespace tarnly
