#include "TarnlyPlatform/Net/WebSocketCodec.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "Support/WebSocketFrames.hpp"

namespace tarnly {
namespace {

using Code = WebSocketCloseCode;
using Entry = test::WebSocketLog::Entry;
using Frame = test::WebSocketFrame;
using EventKind = WebSocketEvent::Kind;
using test::decoded;
using testing::ElementsAre;
using testing::IsEmpty;

std::string ofSize(std::size_t size) {
    std::string result(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        result[i] = static_cast<char>('a' + i % 23);
    }
    return result;
}

std::string coded(unsigned code, std::string_view reason = {}) {
    return std::string{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)} += reason;
}

Entry violation(Code code = Code::protocolError) { return {EventKind::violation, {}, code}; }

TEST(WebSocketDecoder, TellsWhatEachFrameSays) {
    const auto bytes = Frame{Frame::text, "hello"}.bytes() + Frame{Frame::binary, "dropped"}.bytes() +
                       Frame{Frame::ping, "p"}.bytes() + Frame{Frame::pong, {}}.bytes() +
                       Frame{Frame::text, {}}.bytes() + Frame{Frame::close, coded(1001, "bye")}.bytes();
    EXPECT_THAT(decoded(bytes).entries,
                ElementsAre(Entry{EventKind::textEnd, "hello"}, Entry{EventKind::binaryEnd},
                            Entry{EventKind::ping, "p"}, Entry{EventKind::pong}, Entry{EventKind::textEnd},
                            Entry{EventKind::close, "bye", Code{1001}}));
}

/// Each form of length, fragments with control frames between them, and an end.
std::string everything(bool isMasked) {
    std::string bytes;
    const auto add = [&](Frame frame) {
        if (!isMasked) frame.mask.reset();
        bytes += frame.bytes();
    };
    for (const std::size_t size : {0U, 1U, 125U, 126U, 127U, 300U}) {
        add({Frame::text, ofSize(size)});
        add({Frame::text, ofSize(size), false});
        add({Frame::ping, ofSize(std::min<std::size_t>(size, 125))});
        add({Frame::continuation, {}, false});
        add({Frame::continuation, "rest"});
        add({Frame::binary, ofSize(size)});
    }
    add({Frame::close, coded(4999, "the end")});
    return bytes;
}

TEST(WebSocketDecoder, ReadsTheSameWhereverTheBytesAreSplit) {
    for (const bool isMasked : {true, false}) {
        const auto own = isMasked ? WebSocketSide::server : WebSocketSide::client;
        const auto bytes = everything(isMasked);
        const auto whole = decoded(bytes, bytes.size(), own);
        ASSERT_EQ(whole.entries.size(), 25U);
        for (std::size_t split = 1; split < bytes.size(); ++split) {
            WebSocketDecoder decoder(own, 1000);
            test::WebSocketLog log;
            log.read(decoder, bytes.substr(0, split), split);
            log.read(decoder, bytes.substr(split), bytes.size());
            ASSERT_EQ(log, whole) << "split behind byte " << split;
        }
        for (const std::size_t size : {1U, 2U, 3U, 7U, 13U, 64U}) {
            ASSERT_EQ(decoded(bytes, size, own), whole) << "in pieces of " << size;
        }
    }
}

TEST(WebSocketDecoder, TakesEachFormOfLength) {
    for (const std::size_t size : {0U, 1U, 125U, 126U, 127U, 65535U, 65536U, 70000U}) {
        for (const std::size_t pieceSize : {1U, 1000U, 100'000U}) {
            EXPECT_THAT(decoded(Frame{Frame::text, ofSize(size)}.bytes(), pieceSize).entries,
                        ElementsAre(Entry{EventKind::textEnd, ofSize(size)}));
        }
    }
}

TEST(WebSocketDecoder, RefusesALengthThatIsLongerThanItNeedsToBe) {
    struct Case {
        int bytes;
        std::uint64_t length;
    };
    for (const auto [bytes, length] :
         {Case{2, 0}, Case{2, 125}, Case{8, 0}, Case{8, 126}, Case{8, 65535}, Case{8, 1ULL << 63}}) {
        Frame frame{Frame::text};
        frame.lengthBytes = bytes;
        frame.length = length;
        EXPECT_THAT(decoded(frame.bytes()).entries, ElementsAre(violation())) << bytes << ", " << length;
    }
}

TEST(WebSocketDecoder, RefusesWhatBreaksTheFraming) {
    const Frame begun{Frame::text, "x", false};
    struct Case {
        const char* what;
        std::string bytes;
    };
    auto unmasked = Frame{Frame::text, "x"};
    unmasked.mask.reset();
    const std::array cases{
        Case{"the first reserved bit", Frame{Frame::text, "x", true, 4}.bytes()},
        Case{"the second reserved bit", Frame{Frame::text, "x", true, 2}.bytes()},
        Case{"the third reserved bit", Frame{Frame::ping, {}, true, 1}.bytes()},
        Case{"an unknown data frame", Frame{3, "x"}.bytes()},
        Case{"another one", Frame{7}.bytes()},
        Case{"an unknown control frame", Frame{0xB, "x"}.bytes()},
        Case{"another one", Frame{0xF}.bytes()},
        Case{"no mask", unmasked.bytes()},
        Case{"a ping in fragments", Frame{Frame::ping, "x", false}.bytes()},
        Case{"a long ping", Frame{Frame::ping, ofSize(126)}.bytes()},
        Case{"a long pong", Frame{Frame::pong, ofSize(126)}.bytes()},
        Case{"a long close", Frame{Frame::close, coded(1000, ofSize(124))}.bytes()},
        Case{"a continuation of nothing", Frame{Frame::continuation, "x"}.bytes()},
        Case{"a text within a text", begun.bytes() + Frame{Frame::text, "x"}.bytes()},
        Case{"a binary message within a text", begun.bytes() + Frame{Frame::binary, "x"}.bytes()},
        Case{"half a close code", Frame{Frame::close, "x"}.bytes()},
    };
    for (const auto& [what, bytes] : cases) {
        for (const std::size_t pieceSize : {1000U, 1U}) {
            const auto log = decoded(bytes + Frame{Frame::text, "unheard"}.bytes(), pieceSize);
            EXPECT_THAT(log.entries, ElementsAre(violation())) << what;
        }
    }
}

TEST(WebSocketDecoder, AClientRefusesWhatIsMasked) {
    EXPECT_THAT(decoded(Frame{Frame::text, "x"}.bytes(), 100, WebSocketSide::client).entries,
                ElementsAre(violation()));
}

TEST(WebSocketDecoder, LooksAtNothingBehindAnEnd) {
    const auto more = Frame{Frame::text, "x"}.bytes() + Frame{Frame::ping}.bytes() + "\xFF\xFF\xFF";
    for (const std::size_t pieceSize : {1000U, 1U}) {
        EXPECT_THAT(decoded(Frame{Frame::close}.bytes() + more, pieceSize).entries,
                    ElementsAre(Entry{EventKind::close}));
    }
}

TEST(WebSocketDecoder, TakesTheCloseCodesThatAPeerMaySend) {
    for (unsigned code = 0; code <= 0xFFFF; ++code) {
        const bool isSendable = (code >= 1000 && code <= 1003) || (code >= 1007 && code <= 1014) ||
                                (code >= 3000 && code <= 4999);
        const auto expected =
            isSendable ? Entry{EventKind::close, {}, Code{static_cast<std::uint16_t>(code)}} : violation();
        ASSERT_THAT(decoded(Frame{Frame::close, coded(code)}.bytes()).entries, ElementsAre(expected)) << code;
    }
}

TEST(WebSocketDecoder, ARefusedReasonIsOneThatIsNotUtf8) {
    EXPECT_THAT(decoded(Frame{Frame::close, coded(1000, "caf\xC3\xA9")}.bytes()).entries,
                ElementsAre(Entry{EventKind::close, "caf\xC3\xA9", Code::normal}));
    EXPECT_THAT(decoded(Frame{Frame::close, coded(1000, "caf\xC3")}.bytes()).entries,
                ElementsAre(violation(Code::notUtf8)));
}

TEST(WebSocketDecoder, HandsMalformedTextOnAsItCame) {
    const std::string bytes("\xED\xA0\x80 \xFF \0", 7);
    EXPECT_THAT(decoded(Frame{Frame::text, bytes}.bytes(), 1).entries,
                ElementsAre(Entry{EventKind::textEnd, bytes}));
}

TEST(WebSocketDecoder, TheLimitCountsTheFragmentsOfAMessageTogether) {
    const auto frames = Frame{Frame::text, ofSize(6), false}.bytes() +
                        Frame{Frame::ping, ofSize(100)}.bytes() +
                        Frame{Frame::continuation, ofSize(4)}.bytes();
    const auto read = [&](std::size_t limit) {
        return decoded(frames + frames, 1000, WebSocketSide::server, limit).entries;
    };
    const Entry pinged{EventKind::ping, ofSize(100)};
    const Entry joined{EventKind::textEnd, ofSize(6) + ofSize(4)};
    EXPECT_THAT(read(10), ElementsAre(pinged, joined, pinged, joined));
    EXPECT_THAT(read(9), ElementsAre(pinged, violation(Code::tooBig)));
    EXPECT_THAT(read(5), ElementsAre(violation(Code::tooBig)));
}

TEST(WebSocketDecoder, AFrameBeyondTheLimitIsRefusedByItsHeader) {
    for (const auto opcode : {Frame::text, Frame::binary}) {
        Frame frame{opcode};
        frame.length = (1ULL << 63) - 1;
        EXPECT_THAT(decoded(frame.bytes()).entries, ElementsAre(violation(Code::tooBig)));
    }
    auto second = Frame{Frame::continuation};
    second.length = (1ULL << 63) - 1;
    constexpr auto noLimit = static_cast<std::size_t>(-1);
    const auto bytes = Frame{Frame::text, "x", false}.bytes() + second.bytes();
    EXPECT_THAT(decoded(bytes, 100, WebSocketSide::server, noLimit).entries, IsEmpty()) << "none is reached";
}

TEST(WebSocketDecoder, ALimitAppliesFromTheNextFrameOn) {
    const auto begin = Frame{Frame::text, ofSize(100), false}.bytes();
    const auto more = Frame{Frame::continuation, ofSize(50)}.bytes();
    const auto half = begin.size() / 2;
    const auto read = [&](std::size_t first, std::size_t then) {
        WebSocketDecoder decoder(WebSocketSide::server, first);
        test::WebSocketLog log;
        log.read(decoder, begin.substr(0, half), half);
        decoder.setMessageLimit(then);
        log.read(decoder, begin.substr(half) + more, 1000);
        return log.entries;
    };
    const Entry joined{EventKind::textEnd, ofSize(100) + ofSize(50)};
    EXPECT_THAT(read(100, 150), ElementsAre(joined)) << "raised";
    EXPECT_THAT(read(100, 149), ElementsAre(violation(Code::tooBig))) << "raised by too little";
    EXPECT_THAT(read(150, 100), ElementsAre(violation(Code::tooBig))) << "lowered";
    EXPECT_THAT(read(150, 10), ElementsAre(violation(Code::tooBig))) << "below what is there already";
}

TEST(WebSocketDecoder, AMessageAboveTheLimitMayBeTriedAgain) {
    const auto bytes =
        Frame{Frame::text, ofSize(100), false}.bytes() + Frame{Frame::continuation, ofSize(50)}.bytes();
    WebSocketDecoder decoder(WebSocketSide::server, 99);
    std::string input = bytes;
    std::span<char> left(input);
    std::string read;
    const auto readOn = [&] {
        auto event = decoder.next(left);
        while (event && event->kind == EventKind::textPiece) {
            read += event->bytes;
            event = decoder.next(left);
        }
        return event;
    };
    EXPECT_EQ(readOn()->code, Code::tooBig);
    decoder.retry();
    EXPECT_EQ(readOn()->code, Code::tooBig) << "the limit is the same";
    decoder.setMessageLimit(149);
    decoder.retry();
    EXPECT_EQ(readOn()->code, Code::tooBig) << "the second frame is one too many";
    EXPECT_EQ(read, ofSize(100));
    decoder.setMessageLimit(150);
    decoder.retry();
    EXPECT_EQ(readOn()->kind, EventKind::textEnd);
    EXPECT_EQ(read, ofSize(100) + ofSize(50));
    EXPECT_TRUE(left.empty());
}

TEST(WebSocketDecoder, TellsHowLongTheMessageUnderWayIs) {
    WebSocketDecoder decoder(WebSocketSide::server, 1000);
    test::WebSocketLog log;
    const auto read = [&](std::string_view bytes) {
        log.read(decoder, bytes, 100);
        return decoder.announcedSize();
    };
    const auto frame = Frame{Frame::text, ofSize(50), false}.bytes();
    EXPECT_EQ(decoder.announcedSize(), 0U);
    EXPECT_EQ(read(frame.substr(0, 6)), 50U) << "the header is enough";
    EXPECT_EQ(read(frame.substr(6)), 50U);
    EXPECT_EQ(read(Frame{Frame::ping, ofSize(7)}.bytes()), 50U);
    EXPECT_EQ(read(Frame{Frame::continuation, ofSize(9), false}.bytes()), 59U);
    EXPECT_EQ(read(Frame{Frame::continuation}.bytes()), 0U);
    EXPECT_EQ(read(Frame{Frame::binary, ofSize(3), false}.bytes()), 3U);
}

TEST(ApplyMask, MasksEachByteByItsPlaceInThePayload) {
    const WebSocketMask mask{0x01, 0x20, 0x83, 0xFF};
    for (std::size_t size = 0; size <= 40; ++size) {
        for (std::size_t offset = 0; offset < 9; ++offset) {
            const auto plain = ofSize(size);
            auto expected = plain;
            for (std::size_t i = 0; i < size; ++i) {
                const unsigned byte = static_cast<unsigned char>(plain[i]);
                expected[i] = static_cast<char>(byte ^ mask.at((offset + i) % 4));
            }
            auto masked = plain;
            applyMask(masked, mask, offset);
            EXPECT_EQ(masked, expected) << size << " bytes at " << offset;
            applyMask(masked, mask, offset);
            EXPECT_EQ(masked, plain);
        }
    }
}

TEST(WebSocketFrameHeader, WritesTheLengthInTheShortestForm) {
    struct Case {
        std::uint64_t size;
        std::string_view expected;
    };
    using namespace std::string_view_literals;
    const std::array cases{
        Case{0, "\x81\x00"sv},
        Case{125, "\x81\x7D"sv},
        Case{126, "\x81\x7E\x00\x7E"sv},
        Case{65535, "\x81\x7E\xFF\xFF"sv},
        Case{65536, "\x81\x7F\0\0\0\0\0\x01\0\0"sv},
        Case{0x0123'4567'89AB'CDEF, "\x81\x7F\x01\x23\x45\x67\x89\xAB\xCD\xEF"sv},
    };
    for (const auto& [size, expected] : cases) {
        EXPECT_EQ(WebSocketFrameHeader(WebSocketOpcode::text, true, size).bytes(), expected) << size;
        auto masked = std::string(expected) + "\x0A\x0B\x0C\x0D";
        masked[1] = static_cast<char>(static_cast<unsigned char>(masked[1]) | 0x80U);
        const WebSocketFrameHeader header(WebSocketOpcode::text, true, size, WebSocketMask{10, 11, 12, 13});
        EXPECT_EQ(header.bytes(), masked) << size;
    }
}

TEST(WebSocketFrameHeader, WritesOpcodeAndFinalBit) {
    using enum WebSocketOpcode;
    for (const auto opcode : {continuation, text, binary, close, ping, pong}) {
        const auto number = static_cast<char>(opcode);
        EXPECT_EQ(WebSocketFrameHeader(opcode, false, 5).bytes(), (std::string{number, 5}));
        EXPECT_EQ(WebSocketFrameHeader(opcode, true, 5).bytes(), (std::string{char(number | '\x80'), 5}));
    }
}

TEST(WebSocketFrameHeader, IsReadByTheOtherSide) {
    for (const std::size_t size : {0U, 1U, 125U, 126U, 65535U, 65536U}) {
        for (const bool isMasked : {true, false}) {
            std::optional<WebSocketMask> mask;
            if (isMasked) mask = WebSocketMask{0x55, 0xAA, 0x00, 0xFF};
            auto payload = ofSize(size);
            if (mask) applyMask(payload, *mask);
            std::string bytes(WebSocketFrameHeader(WebSocketOpcode::text, false, size, mask).bytes());
            bytes += payload;
            bytes += WebSocketFrameHeader(WebSocketOpcode::continuation, true, size, mask).bytes();
            bytes += payload;
            const auto side = isMasked ? WebSocketSide::server : WebSocketSide::client;
            EXPECT_THAT(decoded(bytes, 1000, side).entries,
                        ElementsAre(Entry{EventKind::textEnd, ofSize(size) + ofSize(size)}));
        }
    }
}

TEST(ClosePayload, IsTheCodeInTwoBytes) {
    EXPECT_EQ(closePayload(Code::protocolError), coded(1002));
    EXPECT_THAT(decoded(Frame{Frame::close, closePayload(Code::tooBig)}.bytes()).entries,
                ElementsAre(Entry{EventKind::close, {}, Code::tooBig}));
}

} // namespace
} // namespace tarnly
