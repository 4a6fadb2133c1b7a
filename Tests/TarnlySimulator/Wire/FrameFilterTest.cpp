#include "TarnlySimulator/Wire/FrameFilter.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tarnly::simulator {
namespace {

const std::string head = "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n\r\n";
constexpr FrameFilter::Wish nothing{};
constexpr FrameFilter::Wish pongs{.dropsPongs = true, .stopsMidMessage = false};
constexpr FrameFilter::Wish stop{.dropsPongs = false, .stopsMidMessage = true};

std::string frame(unsigned opcode, const std::string& payload) {
    std::string out(1, static_cast<char>(0x80 | opcode));
    const auto add = [&](std::size_t bytes) {
        for (std::size_t at = bytes; at-- > 0;)
            out += static_cast<char>(payload.size() >> (8 * at) & 0xFF);
    };
    if (payload.size() < 126) {
        add(1);
    } else if (payload.size() < 65536) {
        out += static_cast<char>(126);
        add(2);
    } else {
        out += static_cast<char>(127);
        add(8);
    }
    return out + payload;
}

std::string text(const std::string& payload) { return frame(1, payload); }
std::string pong(const std::string& payload) { return frame(10, payload); }

TEST(FrameFilter, LetsEverythingThroughUnlessItIsTold) {
    FrameFilter filter;
    const std::string all = head + text("a") + pong("b") + text(std::string(300, 'c')) +
                            frame(2, std::string(70000, 'd')) + text("") + frame(8, "");
    EXPECT_EQ(filter.pass(all, nothing), all);
    EXPECT_FALSE(filter.hasStopped());
}

TEST(FrameFilter, LosesNothingWhereverItIsCut) {
    const std::string all = head + text("abc") + pong("b") + text(std::string(300, 'c'));
    FrameFilter filter;
    std::string out;
    for (const char byte : all)
        out += filter.pass(std::string_view(&byte, 1), nothing);
    EXPECT_EQ(out, all);
}

TEST(FrameFilter, WhatIsNoWebSocketPassesAsItIs) {
    FrameFilter filter;
    const std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n" + pong("ab");
    EXPECT_EQ(filter.pass(answer, {true, true}), answer);
    EXPECT_FALSE(filter.hasStopped());
}

TEST(FrameFilter, DropsPongsAlone) {
    FrameFilter filter;
    const std::string all = head + pong("a") + text("b") + pong("") + frame(9, "ping") + pong("c");
    EXPECT_EQ(filter.pass(all, pongs), head + text("b") + frame(9, "ping"));
    EXPECT_EQ(filter.pass(pong("d"), nothing), pong("d"));
}

TEST(FrameFilter, StopsInTheMiddleOfAMessageForGood) {
    FrameFilter filter;
    EXPECT_EQ(filter.pass(head + pong("ab") + text("x"), stop), head + pong("ab") + text("x"));
    const auto message = text("12345678");
    EXPECT_EQ(filter.pass(message + text("more"), stop), message.substr(0, 2 + 4));
    EXPECT_TRUE(filter.hasStopped());
    EXPECT_EQ(filter.pass(text("again"), nothing), "");
}

TEST(FrameFilter, StopsInTheMiddleOfALongMessageThatComesInPieces) {
    FrameFilter filter;
    filter.pass(head, nothing);
    const auto message = text(std::string(80000, 'x'));
    std::string out;
    for (std::size_t at = 0; at < message.size(); at += 1000)
        out += filter.pass(std::string_view(message).substr(at, 1000), stop);
    EXPECT_EQ(out, message.substr(0, 10 + 40000));
    EXPECT_TRUE(filter.hasStopped());
}

} // namespace
} // namespace tarnly::simulator
