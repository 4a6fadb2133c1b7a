#include <gtest/gtest.h>

#include <stdexcept>

#include "Support/LoopbackListener.hpp"
#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"

namespace tarnly {
namespace {

using Kind = WebSocketConnection::Kind;
using Opcode = WebSocketConnection::Opcode;
using test::finalBinary;
using test::finalText;
using test::RawPeer;

struct WebSocketTest : testing::Test {
    boost::asio::io_context io;
    SystemClock clock;
    test::LoopbackListener listener{io, clock};

    void run(Task<> scenario) { test::runTask(io, std::move(scenario)); }
};

Task<std::string> receiveText(std::shared_ptr<WebSocketConnection> connection) {
    auto message = co_await connection->receive();
    if (!message) throw std::runtime_error("the connection has ended");
    EXPECT_EQ(message->opcode, Opcode::text);
    co_return message->content;
}

Task<bool> isSendingLost(std::shared_ptr<WebSocketConnection> connection) {
    try {
        co_await connection->drained();
        co_return false;
    } catch (const NetworkError&) {
        co_return true;
    }
}

Task<> exchange(test::LoopbackListener& listener) {
    const auto client = listener.openClient();
    client->send("hello", Kind::awaited);
    client->send("again", Kind::awaited);
    const auto server = co_await listener.accept();
    const auto first = co_await receiveText(server);
    EXPECT_EQ(first, "hello");
    const auto second = co_await receiveText(server);
    EXPECT_EQ(second, "again");
    server->send("answer", Kind::awaited);
    co_await server->drained();
    const auto answer = co_await receiveText(client);
    EXPECT_EQ(answer, "answer");
}

TEST_F(WebSocketTest, MessagesGoBothWaysAndWaitForTheHandshake) { run(exchange(listener)); }

Task<> exchangeLong(test::LoopbackListener& listener) {
    const std::string text(24 * 1024 * 1024, 'x');
    const auto client = listener.openClient();
    client->send(text, Kind::awaited);
    const auto server = co_await listener.accept();
    auto received = co_await receiveText(server);
    EXPECT_TRUE(received == text);
    server->send(std::move(received), Kind::awaited);
    const auto returned = co_await receiveText(client);
    EXPECT_TRUE(returned == text);
}

TEST_F(WebSocketTest, ATextOf24MegabytesGoesBothWays) { run(exchangeLong(listener)); }

Task<> refuseLong(test::LoopbackListener& listener) {
    const auto client = listener.openClient();
    client->send(std::string(1001, 'x'), Kind::awaited);
    const auto server = co_await listener.accept();
    server->setMessageLimit(1000);
    const auto message = co_await server->receive();
    EXPECT_FALSE(message);
    const auto closed = co_await client->receive();
    EXPECT_FALSE(closed);
}

TEST_F(WebSocketTest, AMessageAboveTheLimitEndsTheConnection) { run(refuseLong(listener)); }

Task<> closeInOrder(test::LoopbackListener& listener) {
    const auto client = listener.openClient();
    const auto server = co_await listener.accept();
    co_await client->opened();
    client->send("last words", Kind::awaited);
    client->cancel();
    const auto words = co_await receiveText(server);
    EXPECT_EQ(words, "last words");
    const auto message = co_await server->receive();
    EXPECT_FALSE(message);
    EXPECT_FALSE(server->failure());
    server->send("into the void", Kind::unsolicited);
    const bool isLost = co_await isSendingLost(server);
    EXPECT_TRUE(isLost);
}

TEST_F(WebSocketTest, CancelSendsWhatWasSentAndClosesInOrder) { run(closeInOrder(listener)); }

Task<> failToConnect(boost::asio::io_context& io, Clock& clock, Endpoint nobody) {
    const auto client = openWebSocket(io.get_executor(), clock, nobody, "/");
    client->send("hello", Kind::awaited);
    const auto message = co_await client->receive();
    EXPECT_FALSE(message);
    if (!client->failure()) throw std::runtime_error("the connection did not fail");
    EXPECT_EQ(client->failure()->which(), NetworkError::Case::connectionFailed);
    const bool isLost = co_await isSendingLost(client);
    EXPECT_TRUE(isLost);
}

TEST_F(WebSocketTest, AFailedConnectionSaysWhy) {
    const auto nobody = listener.endpoint();
    listener.listener().cancel();
    run(failToConnect(io, clock, nobody));
}

Task<> speakRaw(boost::asio::io_context& io, test::LoopbackListener& listener) {
    RawPeer peer(io);
    // The first frame comes in one packet with the handshake.
    co_await peer.upgrade(listener.endpoint(), RawPeer::frame(finalText, "early"));
    const auto server = co_await listener.accept();
    const auto early = co_await receiveText(server);
    EXPECT_EQ(early, "early");

    co_await peer.write(RawPeer::frame(0x01, "frag") + RawPeer::frame(0x89, "ping") +
                        RawPeer::frame(0x00, "men") + RawPeer::frame(0x80, "ts"));
    const auto joined = co_await receiveText(server);
    EXPECT_EQ(joined, "fragments");
    const auto pong = co_await peer.read(6);
    EXPECT_EQ(pong, "\x8A\x04ping");

    co_await peer.write(RawPeer::frame(finalText, "a\xFFz\xC3"));
    const auto malformed = co_await receiveText(server);
    EXPECT_EQ(malformed, "a\xFFz\xC3");

    co_await peer.write(RawPeer::frame(finalBinary, "\x01\x02") + RawPeer::frame(finalText, "text"));
    const auto binary = co_await server->receive();
    EXPECT_TRUE(binary && binary->opcode == Opcode::binary && binary->content.empty());
    const auto text = co_await receiveText(server);
    EXPECT_EQ(text, "text");

    co_await peer.write(RawPeer::frame(finalText, ""));
    const auto empty = co_await receiveText(server);
    EXPECT_EQ(empty, "");
    server->cancel();
}

TEST_F(WebSocketTest, FragmentsPingsMalformedBytesAndBinaryFrames) { run(speakRaw(io, listener)); }

Task<> pingWhileNobodyReceives(boost::asio::io_context& io, test::LoopbackListener& listener) {
    RawPeer peer(io);
    co_await peer.upgrade(listener.endpoint());
    const auto server = co_await listener.accept();
    co_await peer.write(RawPeer::frame(0x89, "1"));
    const auto first = co_await peer.read(3);
    EXPECT_EQ(first,
              "\x8A\x01"
              "1");
    // A peer that goes is noticed although nobody receives: sending ends.
    peer.socket().close();
    Event ended(io.get_executor());
    SystemClock clock;
    for (int i = 0; i < 100 && !server->failure(); ++i) {
        co_await clock.sleepFor(std::chrono::milliseconds(20));
    }
    EXPECT_TRUE(server->failure());
}

TEST_F(WebSocketTest, PingsAndTheEndAreNoticedWhileNobodyReceives) {
    run(pingWhileNobodyReceives(io, listener));
}

Task<> sendToOneWhoDoesNotRead(boost::asio::io_context& io, test::LoopbackListener& listener) {
    RawPeer peer(io);
    co_await peer.upgrade(listener.endpoint());
    const auto server = co_await listener.accept();
    const std::string megabyte(1024 * 1024, 'x');
    server->send(std::string(32 * 1024 * 1024, 'r'), Kind::awaited); // does not count
    EXPECT_EQ(server->backlog(), 0U);
    for (int i = 0; i < 8; ++i) {
        server->send(megabyte, Kind::unsolicited);
    }
    EXPECT_EQ(server->backlog(), 8 * megabyte.size());
    EXPECT_FALSE(server->failure());
    server->send("one byte more is too much", Kind::unsolicited);
    EXPECT_TRUE(server->failure());
    const auto message = co_await server->receive();
    EXPECT_FALSE(message);
}

TEST_F(WebSocketTest, APeerThatOwesMoreThanEightMegabytesIsCut) {
    run(sendToOneWhoDoesNotRead(io, listener));
}

Task<> breakTheProtocol(boost::asio::io_context& io, test::LoopbackListener& listener, std::string bytes) {
    RawPeer peer(io);
    co_await peer.upgrade(listener.endpoint());
    const auto server = co_await listener.accept();
    co_await peer.write(std::move(bytes));
    const auto message = co_await server->receive();
    EXPECT_FALSE(message);
    EXPECT_TRUE(server->failure());
}

TEST_F(WebSocketTest, ABreachOfTheProtocolEndsTheConnection) {
    run(breakTheProtocol(io, listener,
                         std::string("\x81\x01"
                                     "x"))); // not masked
    run(breakTheProtocol(io, listener, RawPeer::frame(0x83, "reserved opcode")));
    run(breakTheProtocol(io, listener, RawPeer::frame(0xC1, "reserved bit")));
    run(breakTheProtocol(io, listener, RawPeer::frame(0x80, "continues nothing")));
}

} // namespace
} // namespace tarnly
