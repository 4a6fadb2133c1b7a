#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>

#include "Support/LoopbackListener.hpp"
#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "Support/WebSocketFrames.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "WebSocketCases.hpp"

namespace tarnly {
namespace {

using test::WebSocketCase;
using Entry = test::WebSocketLog::Entry;
using EventKind = WebSocketEvent::Kind;
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

std::string joined(const Strings& pieces) {
    std::string bytes;
    for (const auto& piece : pieces) {
        bytes += piece;
    }
    return bytes;
}

Strings delivered(const WebSocketCase& one, Delivery delivery) {
    if (delivery == Delivery::asGiven) return one.sent;
    const auto bytes = joined(one.sent);
    std::size_t size = bytes.size();
    if (delivery == Delivery::inPieces) size = size < 1000 ? 5 : 997;
    if (delivery == Delivery::byteByByte) size = 1;
    Strings pieces;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        pieces.push_back(bytes.substr(at, size));
    }
    return pieces;
}

/// 0 before the end.
unsigned closeCodeOf(const test::WebSocketLog& log) {
    if (log.entries.empty()) return 0;
    const auto& last = log.entries.back();
    const bool isEnd = last.kind == EventKind::close || last.kind == EventKind::violation;
    return isEnd ? static_cast<unsigned>(last.code) : 0;
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
        if (entry.kind == EventKind::textEnd) answers.texts.push_back(wellFormedUtf8(entry.bytes));
        if (entry.kind == EventKind::ping) answers.pongs.push_back(entry.bytes);
    }
    answers.closeCode = closeCodeOf(log);
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

// Over a socket

/// A server that returns each text.
class Echo : public WebSocketConnection::Receiver {
  public:
    explicit Echo(std::shared_ptr<WebSocketConnection> connection) : connection_(std::move(connection)) {}

    bool onMessage(WebSocketConnection::Message message) override {
        if (message.opcode != WebSocketConnection::Opcode::text) return true;
        connection_->send(wellFormedUtf8(std::move(message.content)), WebSocketConnection::Kind::awaited);
        return true;
    }
    void onEnd() override {}

  private:
    std::shared_ptr<WebSocketConnection> connection_;
};

/// Writes the pieces, ends its side once it has been sent a close frame, and reads to the end.
Task<Answers> converse(test::RawPeer& peer, Strings pieces) {
    try {
        for (auto& piece : pieces) {
            co_await peer.write(std::move(piece));
        }
    } catch (const boost::system::system_error&) { // it has been hung up on, which does not stop its reading
    }
    WebSocketDecoder decoder(WebSocketSide::client, 1 << 20);
    test::WebSocketLog log;
    std::string bytes;
    do {
        const bool wasEnded = closeCodeOf(log) != 0;
        bytes = co_await peer.readSome();
        EXPECT_TRUE(bytes.empty() || !wasEnded) << "nothing follows the close frame";
        if (!bytes.empty()) log.read(decoder, bytes, bytes.size());
        if (!wasEnded && closeCodeOf(log) != 0) peer.endSending();
    } while (!bytes.empty());
    Answers answers;
    for (const auto& entry : log.entries) {
        EXPECT_NE(entry.kind, EventKind::violation);
        if (entry.kind == EventKind::textEnd) answers.texts.push_back(entry.bytes);
        if (entry.kind == EventKind::pong) answers.pongs.push_back(entry.bytes);
    }
    answers.closeCode = closeCodeOf(log);
    co_return answers;
}

struct WebSocketConformanceOnASocket : testing::TestWithParam<Delivery> {
    boost::asio::io_context io;
    SystemClock clock;
    test::LoopbackListener listener{io, clock};
};

Task<Answers> answersOfConnection(WebSocketConformanceOnASocket& test, Strings pieces) {
    test::RawPeer peer(test.io);
    co_await peer.upgrade(test.listener.endpoint());
    peer.socket().set_option(boost::asio::ip::tcp::no_delay(true));
    const auto connection = co_await test.listener.accept();
    const auto echo = std::make_shared<Echo>(connection);
    connection->setReceiver(echo);
    auto answers = co_await converse(peer, std::move(pieces));
    co_return answers;
}

/// Of pings that came together only the last need be answered (RFC 6455, section 5.5.3).
bool answersPings(const Strings& pongs, const Strings& pings) {
    auto next = pings.begin();
    for (const auto& pong : pongs) {
        next = std::find(next, pings.end(), pong);
        if (next == pings.end()) return false;
        ++next;
    }
    return next == pings.end();
}

TEST_P(WebSocketConformanceOnASocket, IsAnswered) {
    constexpr std::uint16_t normal = 1000;
    const auto bye = test::WebSocketFrame{0x8, closePayload(WebSocketCloseCode{normal})}.bytes();
    for (auto& one : test::webSocketCases()) {
        const auto size = joined(one.sent).size();
        if (GetParam() == Delivery::byteByByte && size > 5000) continue;
        if (!one.closeCode) one.sent.push_back(bye); // what lives on is ended by its client
        auto closeCode = one.closeCode.value_or(normal);
        if (closeCode == static_cast<std::uint16_t>(WebSocketCloseCode::none)) closeCode = normal;

        Answers answers;
        auto task = answersOfConnection(*this, delivered(one, GetParam()));
        ASSERT_NO_THROW(answers = test::runTask(io, std::move(task))) << "case " << one.name;
        EXPECT_TRUE(answersPings(answers.pongs, one.pongs)) << "case " << one.name;
        answers.pongs = one.pongs;
        EXPECT_EQ(answers, (Answers{one.texts, one.pongs, closeCode})) << "case " << one.name;
    }
}

std::string nameOf(const testing::TestParamInfo<Delivery>& delivery) {
    constexpr std::array names{"AsGiven", "Whole", "InPieces", "ByteByByte"};
    return names.at(static_cast<std::size_t>(delivery.param));
}

INSTANTIATE_TEST_SUITE_P(Delivered, WebSocketConformanceOnASocket,
                         testing::Values(Delivery::asGiven, Delivery::whole, Delivery::inPieces,
                                         Delivery::byteByByte),
                         nameOf);

} // namespace
} // namespace tarnly
