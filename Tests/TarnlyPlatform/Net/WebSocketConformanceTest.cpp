#include <gtest/gtest.h>

#include <array>
#include <map>

#include "Support/WebSocketFrames.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "WebSocketCases.hpp"

namespace tarnly {
namespace {

using test::WebSocketCase;
using Entry = test::WebSocketLog::Entry;
using Kind = WebSocketEvent::Kind;
using Strings = std::vector<std::string>;

TEST(WebSocketConformance, HasItsCasesInEachGroup) {
    std::map<int, int> counts;
    for (const auto& one : test::webSocketCases()) {
        ++counts[std::stoi(one.name)];
    }
    const std::map<int, int> expected{{1, 16}, {2, 11}, {3, 7}, {4, 10}, {5, 20}, {6, 145}, {7, 37}, {10, 1}};
    EXPECT_EQ(counts, expected);
    EXPECT_EQ(test::webSocketCases().size(), 247U);
}

/// How the bytes of a case are handed over.
enum class Delivery { asGiven, whole, inPieces, byteByByte };

Strings delivered(const WebSocketCase& one, Delivery delivery) {
    if (delivery == Delivery::asGiven) return one.sent;
    std::string bytes;
    for (const auto& piece : one.sent) {
        bytes += piece;
    }
    std::size_t size = bytes.size();
    if (delivery == Delivery::inPieces) size = size < 1000 ? 5 : 997;
    if (delivery == Delivery::byteByByte) size = 1;
    Strings pieces;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        pieces.push_back(bytes.substr(at, size));
    }
    return pieces;
}

struct Answers {
    Strings texts;
    Strings pongs;
    /// 0: none has come.
    unsigned closeCode = 0;

    bool operator==(const Answers&) const = default;
};

void PrintTo(const Answers& answers, std::ostream* out) {
    const auto print = [&](const char* what, const Strings& all) {
        for (const auto& one : all) {
            *out << what << testing::PrintToString(one.substr(0, 100)) << " of " << one.size() << ", ";
        }
    };
    print("text ", answers.texts);
    print("pong ", answers.pongs);
    *out << "close code " << answers.closeCode;
}

/// What a server that returns each text makes of the bytes, as far as the decoder decides it.
Answers answersOfDecoder(const Strings& pieces) {
    WebSocketDecoder decoder(WebSocketSide::server, 1 << 20);
    test::WebSocketLog log;
    for (const auto& piece : pieces) {
        log.read(decoder, piece, piece.size());
    }
    Answers answers;
    for (const auto& entry : log.entries) {
        if (entry.kind == Kind::textEnd) answers.texts.push_back(wellFormedUtf8(entry.bytes));
        if (entry.kind == Kind::ping) answers.pongs.push_back(entry.bytes);
        const bool isEnd = entry.kind == Kind::close || entry.kind == Kind::violation;
        if (isEnd) answers.closeCode = static_cast<unsigned>(entry.code);
    }
    return answers;
}

TEST(WebSocketConformance, OfTheDecoder) {
    for (const auto& one : test::webSocketCases()) {
        const Answers expected{one.texts, one.pongs, one.closeCode.value_or(0)};
        for (const auto delivery :
             {Delivery::asGiven, Delivery::whole, Delivery::inPieces, Delivery::byteByByte}) {
            EXPECT_EQ(answersOfDecoder(delivered(one, delivery)), expected)
                << "case " << one.name << ", delivery " << static_cast<int>(delivery);
        }
    }
}

} // namespace
} // namespace tarnly
