#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>

#include "Support/LoopbackListener.hpp"
#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"

/// How long the network waits for a peer: real sockets, and a clock that the test turns.
namespace tarnly {
namespace {

using namespace std::chrono_literals;
using boost::asio::ip::tcp;
using Kind = WebSocketConnection::Kind;

constexpr auto aMoment = 1ms;

std::optional<NetworkError> networkErrorOf(const std::exception_ptr& failure) {
    try {
        if (failure) std::rethrow_exception(failure);
    } catch (const NetworkError& error) {
        return error;
    }
    return std::nullopt;
}

/// What the next peer says before it hangs up.
Task<std::string> readAll(tcp::acceptor& acceptor) {
    auto socket = co_await acceptor.async_accept(boost::asio::use_awaitable);
    std::string bytes;
    auto buffer = boost::asio::dynamic_buffer(bytes);
    constexpr auto token = boost::asio::as_tuple(boost::asio::use_awaitable);
    auto [error, size] = co_await boost::asio::async_read(socket, buffer, token);
    EXPECT_EQ(error, boost::asio::error::eof);
    co_return bytes;
}

struct NetworkLimitsTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    test::LoopbackListener listener{io, clock};
    test::RawPeer peer{io};
    /// Takes connections, and never says a word.
    tcp::acceptor silent{io, {boost::asio::ip::address_v4::loopback(), 0}};

    Endpoint silentEndpoint() { return {"127.0.0.1", silent.local_endpoint().port()}; }

    std::shared_ptr<WebSocketConnection> upgraded() {
        test::runTask(io, peer.upgrade(listener.endpoint()));
        return test::runTask(io, listener.accept());
    }

    /// Lets the sockets do all that they can do now.
    void work() {
        do {
            io.restart();
        } while (io.run_for(50ms) > 0);
    }

    void workUntil(const std::function<bool()>& condition) { EXPECT_TRUE(test::runUntil(io, condition)); }

    /// Whether the other side has ended the peer's connection.
    bool isPeerDropped() {
        char byte = 0;
        boost::system::error_code error;
        peer.socket().non_blocking(true);
        peer.socket().receive(boost::asio::buffer(&byte, 1), 0, error);
        return error && error != boost::asio::error::would_block;
    }
};

TEST_F(NetworkLimitsTest, APeerHasTenSecondsToSendItsRequest) {
    test::runTask(io, peer.connect(listener.endpoint()));
    workUntil([this] { return clock.sleeping() == 1; });
    clock.advance(io, 10s - aMoment);
    EXPECT_FALSE(isPeerDropped());
    clock.advance(io, aMoment);
    workUntil([this] { return isPeerDropped(); });
}

TEST_F(NetworkLimitsTest, AServerHasTenSecondsToOpenAWebSocket) {
    const auto connection = openWebSocket(io.get_executor(), clock, silentEndpoint(), "/");
    work();
    clock.advance(io, 10s - aMoment);
    EXPECT_FALSE(connection->failure());
    clock.advance(io, aMoment);
    ASSERT_TRUE(connection->failure());
    EXPECT_EQ(connection->failure()->which(), NetworkError::Case::timedOut);
}

TEST_F(NetworkLimitsTest, WhoWaitsForAWebSocketToOpenIsToldThatItIsLate) {
    const auto connection = openWebSocket(io.get_executor(), clock, silentEndpoint(), "/");
    std::optional<NetworkError> failure;
    boost::asio::co_spawn(io, connection->opened(),
                          [&](const std::exception_ptr& error) { failure = networkErrorOf(error); });
    work();
    clock.advance(io, 10s - aMoment);
    EXPECT_FALSE(failure);
    clock.advance(io, aMoment);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->which(), NetworkError::Case::timedOut);
}

TEST_F(NetworkLimitsTest, AServerHasTheGivenTimeToAnswerARequest) {
    std::optional<NetworkError> failure;
    auto note = [&](const std::exception_ptr& error, const HttpResponse&) {
        failure = networkErrorOf(error);
    };
    boost::asio::co_spawn(io, fetchHttp(clock, silentEndpoint(), HttpRequest{}, 3s), note);
    work();
    clock.advance(io, 3s - aMoment);
    work();
    EXPECT_FALSE(failure);
    clock.advance(io, aMoment);
    workUntil([&] { return failure.has_value(); });
    EXPECT_EQ(failure->which(), NetworkError::Case::timedOut);
}

TEST_F(NetworkLimitsTest, ARequestThatIsMadeSureOfForTooLongIsNotSent) {
    std::optional<NetworkError> failure;
    auto note = [&](const std::exception_ptr& error, const HttpResponse&) {
        failure = networkErrorOf(error);
    };
    const auto makeSure = [this] { return clock.sleepFor(5s); };
    boost::asio::co_spawn(io, fetchHttp(clock, silentEndpoint(), HttpRequest{}, 3s, makeSure), note);
    workUntil([this] { return clock.sleeping() == 2; });
    clock.advance(io, 5s);
    workUntil([&] { return failure.has_value(); });
    EXPECT_EQ(failure->which(), NetworkError::Case::timedOut);
    EXPECT_EQ(test::runTask(io, readAll(silent)), "");
}

TEST_F(NetworkLimitsTest, APeerThatTakesNothingForFifteenSecondsIsCut) {
    const auto connection = upgraded();
    connection->send(std::string(32 * 1024 * 1024, 'x'), Kind::awaited);
    work();
    clock.advance(io, 15s - aMoment);
    EXPECT_FALSE(connection->failure());
    clock.advance(io, aMoment);
    ASSERT_TRUE(connection->failure());
    EXPECT_EQ(connection->failure()->which(), NetworkError::Case::timedOut);
}

TEST_F(NetworkLimitsTest, APeerThatReadsOnAtLeastOnceInFifteenSecondsStays) {
    const auto connection = upgraded();
    connection->send(std::string(32 * 1024 * 1024, 'x'), Kind::awaited);
    for (int i = 0; i < 3; ++i) {
        work();
        clock.advance(io, 14s);
        test::runTask(io, peer.read(8 * 1024 * 1024));
    }
    EXPECT_FALSE(connection->failure());
}

TEST_F(NetworkLimitsTest, APeerHasHalfASecondToAnswerTheClose) {
    const auto connection = upgraded();
    bool hasEnded = false;
    boost::asio::co_spawn(io, connection->receive(),
                          [&](const std::exception_ptr&, const auto&) { hasEnded = true; });
    connection->cancel();
    work();
    clock.advance(io, 500ms - aMoment);
    EXPECT_FALSE(hasEnded);
    clock.advance(io, aMoment);
    EXPECT_TRUE(hasEnded);
}

TEST_F(NetworkLimitsTest, NobodyWaitsForAConnectionThatIsThere) {
    const auto connection = upgraded();
    work();
    EXPECT_EQ(clock.sleeping(), 0U);
    clock.advance(io, 24h);
    EXPECT_FALSE(connection->failure());
}

} // namespace
} // namespace tarnly
