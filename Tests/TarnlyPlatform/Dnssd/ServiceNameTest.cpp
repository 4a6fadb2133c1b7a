#include <gtest/gtest.h>

#include <string>

#include "TarnlyPlatform/Dnssd/ServicePublisher.hpp"

namespace tarnly {
namespace {

TEST(ServiceName, NextNameCountsFromTwo) {
    EXPECT_EQ(nextServiceName("rig"), "rig (2)");
    EXPECT_EQ(nextServiceName("rig (2)"), "rig (3)");
    EXPECT_EQ(nextServiceName("rig (9)"), "rig (10)");
    EXPECT_EQ(nextServiceName("rig (99)"), "rig (100)");
}

TEST(ServiceName, OnlyOurOwnSuffixIsCountedOn) {
    EXPECT_EQ(nextServiceName("rig (1)"), "rig (1) (2)");
    EXPECT_EQ(nextServiceName("rig (02)"), "rig (02) (2)");
    EXPECT_EQ(nextServiceName("rig (two)"), "rig (two) (2)");
    EXPECT_EQ(nextServiceName("rig (-2)"), "rig (-2) (2)");
    EXPECT_EQ(nextServiceName("rig ()"), "rig () (2)");
    EXPECT_EQ(nextServiceName("rig(2)"), "rig(2) (2)");
    EXPECT_EQ(nextServiceName("rig (2) left"), "rig (2) left (2)");
    EXPECT_EQ(nextServiceName(" (2)"), " (2) (2)");
    EXPECT_EQ(nextServiceName("rig (9999999999)"), "rig (9999999999) (2)");
}

TEST(ServiceName, SuffixPushesTheEndOfALongNameOut) {
    EXPECT_EQ(nextServiceName(std::string(63, 'a')), std::string(59, 'a') + " (2)");
    EXPECT_EQ(nextServiceName(std::string(59, 'a') + " (9)"), std::string(58, 'a') + " (10)");
}

TEST(ServiceName, CutsToSixtyThreeBytes) {
    EXPECT_EQ(cutServiceName(std::string(63, 'a')), std::string(63, 'a'));
    EXPECT_EQ(cutServiceName(std::string(64, 'a')), std::string(63, 'a'));
    EXPECT_EQ(cutServiceName("rig"), "rig");
}

TEST(ServiceName, NeverCutsWithinACharacter) {
    const std::string airplane = "\xE2\x9C\x88"; // three bytes
    EXPECT_EQ(cutServiceName(std::string(60, 'a') + airplane), std::string(60, 'a') + airplane);
    EXPECT_EQ(cutServiceName(std::string(61, 'a') + airplane), std::string(61, 'a'));
    EXPECT_EQ(cutServiceName(std::string(62, 'a') + airplane), std::string(62, 'a'));
    EXPECT_EQ(nextServiceName(std::string(57, 'a') + airplane + "bc"), std::string(57, 'a') + " (2)");
}

} // namespace
} // namespace tarnly
