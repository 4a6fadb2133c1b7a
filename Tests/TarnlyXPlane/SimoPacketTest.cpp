#include "TarnlyXPlane/Situations.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tarnly {
namespace {

std::string packet(const std::string& path) {
    std::string text;
    for (const auto byte : buildSimoLoadSituationPacket(path))
        text += static_cast<char>(byte);
    return text;
}

const std::string head("SIMO\0\1\0\0\0", 9);

TEST(SimoPacket, ShortPathIsFilledUpWithZeros) {
    const std::string path = "Output/situations/Pattern 1.sit";
    EXPECT_EQ(packet(path), head + path + std::string(150 - path.size() + 2, '\0'));
}

TEST(SimoPacket, PathOf150BytesHasNoTerminator) {
    const std::string path(150, 'p');
    EXPECT_EQ(packet(path), head + path + std::string(2, '\0'));
}

TEST(SimoPacket, LongPathIsCut) {
    EXPECT_EQ(packet(std::string(150, 'p') + std::string(50, 'q')), packet(std::string(150, 'p')));
}

TEST(SimoPacket, CutsBytesNotCharacters) {
    const auto cut = packet(std::string(149, 'p') + "é");
    EXPECT_EQ(cut.substr(9 + 149), std::string("\xC3\0\0", 3));
}

TEST(SimoPacket, IsAlwaysOfTheSameLength) {
    for (const std::size_t length : {0U, 1U, 149U, 150U, 151U, 200U, 5000U}) {
        EXPECT_EQ(packet(std::string(length, 'p')).size(), 161U) << length;
    }
}

} // namespace
} // namespace tarnly
