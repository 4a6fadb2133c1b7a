#include "TarnlySimulator/Api/SituationPort.hpp"

#include <gtest/gtest.h>

#include <cstring>

namespace tarnly::simulator {
namespace {

std::string datagram(const std::string& path, char mode = 1) {
    std::string out("SIMO\0\0\0\0\0", 9);
    out[5] = mode;
    out += path;
    out.resize(161, '\0');
    return out;
}

std::string pathOf(const std::string& bytes) {
    const auto read = situationFrom(std::as_bytes(std::span(bytes)));
    const auto* situation = std::get_if<Situation>(&read);
    return situation != nullptr ? situation->path : "ignored: " + std::get<UnusableDatagram>(read).reason;
}

TEST(Situation, ThePathIsReadUpToItsPadding) {
    EXPECT_EQ(pathOf(datagram("Output/situations/Pattern 1.sit")), "Output/situations/Pattern 1.sit");
}

TEST(Situation, APathMayFillItsField) {
    const std::string path(150, 'x');
    EXPECT_EQ(pathOf(datagram(path)), path);
}

TEST(Situation, ADatagramHas161Bytes) {
    for (const std::size_t size : {0u, 4u, 160u, 162u}) {
        auto bytes = datagram("a.sit");
        bytes.resize(size, '\0');
        EXPECT_EQ(pathOf(bytes), "ignored: it has " + std::to_string(size) + " bytes instead of 161");
    }
}

TEST(Situation, TheLabelAndTheModeAreChecked) {
    auto label = datagram("a.sit");
    label[4] = ' ';
    EXPECT_EQ(pathOf(label), "ignored: it does not begin with SIMO and a zero byte");
    EXPECT_EQ(pathOf(datagram("a.sit", 0)), "ignored: its mode is 0 instead of 1");
    auto bigEndian = datagram("a.sit", 0);
    bigEndian[8] = 1;
    EXPECT_EQ(pathOf(bigEndian), "ignored: its mode is 16777216 instead of 1");
}

TEST(Situation, AnUnfitPathIsRefused) {
    EXPECT_EQ(pathOf(datagram("")), "ignored: its path is empty");
    EXPECT_EQ(pathOf(datagram("a\nb.sit")), "ignored: its path contains control characters");
    EXPECT_EQ(pathOf(datagram(std::string("a.sit\0b", 7))),
              "ignored: its path is not followed by zero bytes alone");
    EXPECT_EQ(pathOf(datagram(std::string(151, 'x'))),
              "ignored: its path is not followed by zero bytes alone");
}

} // namespace
} // namespace tarnly::simulator
