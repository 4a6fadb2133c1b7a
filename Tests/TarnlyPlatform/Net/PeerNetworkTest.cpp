#include "TarnlyPlatform/Net/PeerNetwork.hpp"

#include <gtest/gtest.h>

#include "Support/Networks.hpp"

namespace tarnly {
namespace {

using test::networkOf;

TEST(PeerNetwork, AnIPv4AddressIsOneByItself) {
    EXPECT_EQ(networkOf("192.168.1.20"), networkOf("192.168.1.20"));
    EXPECT_NE(networkOf("192.168.1.20"), networkOf("192.168.1.21"));
    EXPECT_FALSE(networkOf("192.168.1.20").isLoopback());
    EXPECT_EQ(networkOf("192.168.1.20").text(), "192.168.1.20");
}

TEST(PeerNetwork, AnIPv4AddressInTheClothesOfIPv6IsTheSame) {
    EXPECT_EQ(networkOf("::ffff:192.168.1.20"), networkOf("192.168.1.20"));
    EXPECT_TRUE(networkOf("::ffff:127.0.0.1").isLoopback());
}

TEST(PeerNetwork, AnIPv6NetworkOf64BitsIsOne) {
    EXPECT_EQ(networkOf("2001:db8:0:1::5"), networkOf("2001:db8:0:1:ffff:ffff:ffff:ffff"));
    EXPECT_NE(networkOf("2001:db8:0:1::5"), networkOf("2001:db8:0:2::5"));
    EXPECT_EQ(networkOf("2001:db8:0:1::5").text(), "2001:db8:0:1::");
    EXPECT_EQ(networkOf("fe80::1%1"), networkOf("fe80::2%2"));
}

TEST(PeerNetwork, ThisComputerIsOne) {
    EXPECT_EQ(networkOf("127.0.0.1"), networkOf("::1"));
    EXPECT_EQ(networkOf("127.0.0.1"), networkOf("127.9.9.9"));
    EXPECT_TRUE(networkOf("::1").isLoopback());
}

TEST(PeerNetwork, SomewhereUnknownIsNotThisComputer) { EXPECT_FALSE(PeerNetwork().isLoopback()); }

} // namespace
} // namespace tarnly
