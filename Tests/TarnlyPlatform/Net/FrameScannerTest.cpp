#include "TarnlyPlatform/Net/FrameScanner.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnly {
namespace {

constexpr unsigned char finalBit = 0x80;
constexpr unsigned char continuation = 0x0;
constexpr unsigned char text = 0x1;
constexpr unsigned char binary = 0x2;
constexpr unsigned char ping = 0x9;

std::vector<unsigned char> frame(unsigned char first, std::size_t size, bool isMasked) {
    const auto maskBit = static_cast<unsigned char>(isMasked ? 0x80 : 0);
    std::vector<unsigned char> bytes{first};
    if (size < 126) {
        bytes.push_back(static_cast<unsigned char>(maskBit | size));
    } else {
        const int lengthBytes = size < 65536 ? 2 : 8;
        bytes.push_back(static_cast<unsigned char>(maskBit | (lengthBytes == 2 ? 126 : 127)));
        for (int i = lengthBytes - 1; i >= 0; --i) {
            bytes.push_back(static_cast<unsigned char>(size >> (8 * i)));
        }
    }
    if (isMasked) bytes.insert(bytes.end(), {0x81, 0x01, 0x82, 0x02}); // bytes that look like headers
    bytes.insert(bytes.end(), size, 0x81);
    return bytes;
}

void append(std::vector<unsigned char>& stream, const std::vector<unsigned char>& more) {
    stream.insert(stream.end(), more.begin(), more.end());
}

/// A stream with every form of length, fragments and control frames between them, and what becomes of it.
struct Stream {
    std::vector<unsigned char> before;
    std::vector<unsigned char> after;

    Stream() {
        for (const bool isMasked : {true, false}) {
            add(text | finalBit, binary | finalBit, 0, isMasked);
            add(text | finalBit, binary | finalBit, 125, isMasked);
            add(binary | finalBit, binary | finalBit, 126, isMasked);
            add(text, binary, 300, isMasked);
            add(ping | finalBit, ping | finalBit, 5, isMasked);
            add(continuation | finalBit, continuation | finalBit, 70000, isMasked);
            add(text | finalBit, binary | finalBit, 3, isMasked);
        }
    }

    void add(int first, int firstAfter, std::size_t size, bool isMasked) {
        append(before, frame(static_cast<unsigned char>(first), size, isMasked));
        append(after, frame(static_cast<unsigned char>(firstAfter), size, isMasked));
    }
};

TEST(FrameScanner, TurnsTextIntoBinaryInPiecesOfAnySize) {
    const Stream stream;
    for (const std::size_t pieceSize : {1U, 2U, 3U, 7U, 13U, 64U, 1500U, 1000000U}) {
        auto bytes = stream.before;
        FrameScanner scanner;
        for (std::size_t i = 0; i < bytes.size(); i += pieceSize) {
            scanner.scan(std::span(bytes).subspan(i, std::min(pieceSize, bytes.size() - i)));
        }
        EXPECT_EQ(bytes, stream.after) << "in pieces of " << pieceSize;
        for (int round = 0; round < 2; ++round) {
            EXPECT_TRUE(scanner.takeIsText());
            EXPECT_TRUE(scanner.takeIsText());
            EXPECT_FALSE(scanner.takeIsText());
            EXPECT_TRUE(scanner.takeIsText());
            EXPECT_TRUE(scanner.takeIsText());
        }
        EXPECT_FALSE(scanner.takeIsText()) << "no message is left";
    }
}

} // namespace
} // namespace tarnly
