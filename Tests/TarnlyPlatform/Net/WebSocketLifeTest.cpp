#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "Support/LoopbackHttpServer.hpp"
#include "Support/LoopbackListener.hpp"
#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"

/// What a connection tells of its beginning, and of the peer's life: real sockets, and a clock that the test
/// turns.
namespace tarnly {
namespace {

using namespace std::chrono_literals;
using boost::asio::ip::tcp;
using Case = NetworkError::Case;
using Connection = std::shared_ptr<WebSocketConnection>;
using Kind = WebSocketConnection::Kind;
using test::finalPing;
using test::finalPong;
using test::finalText;
using test::RawPeer;

/// A server's ping without content.
const std::string emptyPing("\x89\x00", 2);

Task<std::string> receiveContent(Connection connection) {
    auto message = co_await connection->receive();
    if (!message) throw std::runtime_error("the connection has ended");
    co_return message->content;
}

Task<> hangUpOnce(tcp::acceptor& acceptor) {
    auto socket = co_await acceptor.async_accept(boost::asio::use_awaitable);
    std::string head;
    auto buffer = boost::asio::dynamic_buffer(head);
    co_await boost::asio::async_read_until(socket, buffer, "\r\n\r\n", boost::asio::use_awaitable);
}

Task<std::optional<HttpResponse>> forbid(HttpRequest, bool) {
    co_return HttpResponse{403, "text/plain", "incoming traffic is disabled"};
}

struct WebSocketLifeTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    test::LoopbackListener listener{io, clock};
    RawPeer peer{io};

    struct Pair {
        Connection client;
        Connection server;
    };

    Pair connected() {
        Pair pair;
        pair.client = listener.openClient();
        test::runTask(io, pair.client->opened());
        pair.server = test::runTask(io, listener.accept());
        return pair;
    }

    /// The server's side of a connection with `peer`.
    Connection upgraded(std::string sentAlong = {}) {
        test::runTask(io, peer.upgrade(listener.endpoint(), std::move(sentAlong)));
        return test::runTask(io, listener.accept());
    }

    Connection openTo(Endpoint endpoint) {
        return openWebSocket(io.get_executor(), clock, std::move(endpoint), "/");
    }

    void runUntil(const std::function<bool()>& condition) { ASSERT_TRUE(test::runUntil(io, condition)); }

    void write(std::string bytes) { test::runTask(io, peer.write(std::move(bytes))); }

    /// Sends a message and waits for the answer: what went out before it has been seen on the other side, and
    /// what that answered has come.
    void exchange(const Connection& from, const Connection& to) {
        from->send("question", Kind::awaited);
        EXPECT_EQ(test::runTask(io, receiveContent(to)), "question");
        to->send("answer", Kind::awaited);
        EXPECT_EQ(test::runTask(io, receiveContent(from)), "answer");
    }

    /// Why `connection` did not open.
    std::optional<Case> openingFailure(const Connection& connection) {
        try {
            test::runTask(io, connection->opened());
        } catch (const NetworkError& error) {
            return error.which();
        }
        return std::nullopt;
    }
};

// The beginning

TEST_F(WebSocketLifeTest, AConnectionIsOpenOnceItsHandshakeIsDone) {
    const auto client = listener.openClient();
    EXPECT_EQ(openingFailure(client), std::nullopt);
    const auto server = test::runTask(io, listener.accept());
    EXPECT_EQ(openingFailure(server), std::nullopt);
    EXPECT_EQ(openingFailure(client), std::nullopt);
    exchange(client, server);
}

TEST_F(WebSocketLifeTest, ARefusedHandshakeOpensNothing) {
    test::LoopbackHttpServer server(io, forbid);
    const auto client = openTo(server.endpoint());
    EXPECT_EQ(openingFailure(client), Case::connectionFailed);
    ASSERT_TRUE(client->failure());
    EXPECT_EQ(client->failure()->which(), Case::connectionFailed);
}

TEST_F(WebSocketLifeTest, AServerThatHangsUpOpensNothing) {
    tcp::acceptor acceptor(io, {boost::asio::ip::address_v4::loopback(), 0});
    boost::asio::co_spawn(io, hangUpOnce(acceptor), boost::asio::detached);
    const auto client = openTo({"127.0.0.1", acceptor.local_endpoint().port()});
    EXPECT_EQ(openingFailure(client), Case::connectionFailed);
}

TEST_F(WebSocketLifeTest, NobodyThereOpensNothing) {
    const auto nobody = listener.endpoint();
    listener.listener().cancel();
    const auto client = openTo(nobody);
    EXPECT_EQ(openingFailure(client), Case::connectionFailed);
    EXPECT_EQ(openingFailure(client), Case::connectionFailed);
}

TEST_F(WebSocketLifeTest, AConnectionThatIsGivenUpMeanwhileDoesNotOpen) {
    const auto client = listener.openClient();
    client->cancel();
    EXPECT_EQ(openingFailure(client), Case::connectionClosed);
    EXPECT_FALSE(client->failure());
}

TEST_F(WebSocketLifeTest, AConnectionThatHasEndedIsOpenNoMore) {
    const auto [client, server] = connected();
    server->cancel();
    EXPECT_FALSE(test::runTask(io, client->receive()));
    EXPECT_EQ(openingFailure(client), Case::connectionClosed);
}

TEST_F(WebSocketLifeTest, WhoIsToldToEndWaitsForNoHandshake) {
    const tcp::acceptor silent(io, {boost::asio::ip::address_v4::loopback(), 0});
    const auto client = openTo({"127.0.0.1", silent.local_endpoint().port()});
    TaskGroup group(io.get_executor());
    group.spawn(client->opened(), dropFailure);
    runUntil([this] { return clock.sleeping() == 1; });
    group.cancel();
    runUntil([&] { return group.size() == 0; });
    EXPECT_FALSE(client->failure());
}

// Pings

TEST_F(WebSocketLifeTest, AnAnsweredPingIsCountedAndDated) {
    const auto [client, server] = connected();
    for (const auto& connection : {client, server}) {
        EXPECT_EQ(connection->signsOfLife().pongs, 0U);
        EXPECT_FALSE(connection->signsOfLife().lastPongAt);
        for (std::uint64_t count = 1; count <= 3; ++count) {
            clock.advance(io, 5s);
            connection->ping();
            runUntil([&] { return connection->signsOfLife().pongs == count; });
            EXPECT_EQ(connection->signsOfLife().lastPongAt, clock.now());
        }
    }
}

TEST_F(WebSocketLifeTest, APingBeforeTheHandshakeIsNone) {
    const auto client = listener.openClient();
    client->ping();
    const auto server = test::runTask(io, listener.accept());
    exchange(client, server);
    EXPECT_EQ(client->signsOfLife().pongs, 0U);
    client->ping();
    runUntil([&] { return client->signsOfLife().pongs == 1; });
}

TEST_F(WebSocketLifeTest, OnePingIsUnderWayAtATime) {
    const auto [client, server] = connected();
    client->ping();
    client->ping();
    client->ping();
    exchange(client, server);
    EXPECT_EQ(client->signsOfLife().pongs, 1U);
}

TEST_F(WebSocketLifeTest, AfterTheEndAPingIsNone) {
    const auto [client, server] = connected();
    client->cancel();
    client->ping();
    EXPECT_FALSE(test::runTask(io, client->receive()));
    client->ping();
    EXPECT_FALSE(test::runTask(io, server->receive()));
    server->ping();
    EXPECT_FALSE(client->failure());
    EXPECT_FALSE(server->failure());
}

TEST_F(WebSocketLifeTest, APeerMayLeaveAPingUnanswered) {
    const auto server = upgraded();
    server->ping();
    EXPECT_EQ(test::runTask(io, peer.read(2)), emptyPing);
    write(RawPeer::frame(finalText, "never mind"));
    EXPECT_EQ(test::runTask(io, receiveContent(server)), "never mind");
    EXPECT_EQ(server->signsOfLife().pongs, 0U);
    EXPECT_FALSE(server->failure());

    server->ping();
    EXPECT_EQ(test::runTask(io, peer.read(2)), emptyPing);
    write(RawPeer::frame(finalPong, ""));
    runUntil([&] { return server->signsOfLife().pongs == 1; });
}

TEST_F(WebSocketLifeTest, APingWaitsForTheMessageThatIsBeingSent) {
    constexpr std::size_t size = 16 * 1024 * 1024;
    constexpr std::size_t header = 10;
    const auto server = upgraded();
    server->send(std::string(size, 'x'), Kind::awaited);
    server->ping();
    server->ping();
    const auto message = test::runTask(io, peer.read(header + size));
    EXPECT_EQ(message.size(), header + size);
    EXPECT_EQ(test::runTask(io, peer.read(2)), emptyPing);
    server->cancel();
    const std::string orderlyClose("\x88\x02\x03\xE8", 4);
    EXPECT_EQ(test::runTask(io, peer.read(4)), orderlyClose);
}

// Bytes

TEST_F(WebSocketLifeTest, TheHandshakeIsNoSignOfLife) {
    const auto [client, server] = connected();
    EXPECT_FALSE(client->signsOfLife().lastByteAt);
    EXPECT_FALSE(server->signsOfLife().lastByteAt);
}

TEST_F(WebSocketLifeTest, AMessageIsASignOfLife) {
    const auto [client, server] = connected();
    for (int i = 0; i < 3; ++i) {
        clock.advance(io, 3s);
        exchange(client, server);
        EXPECT_EQ(client->signsOfLife().lastByteAt, clock.now());
        EXPECT_EQ(server->signsOfLife().lastByteAt, clock.now());
    }
    const auto last = clock.now();
    clock.advance(io, 3s);
    EXPECT_EQ(client->signsOfLife().lastByteAt, last);
}

TEST_F(WebSocketLifeTest, WhatComesAlongWithTheHandshakeIsASignOfLife) {
    const auto server = upgraded(RawPeer::frame(finalText, "early"));
    EXPECT_EQ(server->signsOfLife().lastByteAt, clock.now());
    EXPECT_EQ(test::runTask(io, receiveContent(server)), "early");
}

TEST_F(WebSocketLifeTest, PingsPongsAndPartsOfAFrameAreSignsOfLife) {
    const auto server = upgraded();
    const auto text = RawPeer::frame(finalText, "in two parts");
    constexpr std::size_t cut = 4; // within the header: behind it, the rest is read when somebody receives
    for (const auto& bytes : {RawPeer::frame(finalPing, "1"), RawPeer::frame(finalPong, "2"),
                              text.substr(0, cut), text.substr(cut)}) {
        clock.advance(io, 3s);
        write(bytes);
        runUntil([&] { return server->signsOfLife().lastByteAt == clock.now(); });
    }
    EXPECT_EQ(test::runTask(io, receiveContent(server)), "in two parts");
}

TEST_F(WebSocketLifeTest, SignsOfLifeAreSeenWhileNobodyReceives) {
    const auto [client, server] = connected();
    clock.advance(io, 3s);
    client->ping();
    runUntil([&] { return client->signsOfLife().pongs == 1; });
    EXPECT_EQ(client->signsOfLife().lastByteAt, clock.now());
    EXPECT_EQ(server->signsOfLife().lastByteAt, clock.now());
}

} // namespace
} // namespace tarnly
