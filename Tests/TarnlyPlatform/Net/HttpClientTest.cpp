#include "TarnlyPlatform/Net/HttpClient.hpp"

#include <gtest/gtest.h>

#include <array>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>

#include "Support/LoopbackHttpServer.hpp"
#include "Support/LoopbackListener.hpp"
#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlyPlatform/Net/RealTime.hpp"

namespace tarnly {
namespace {

using boost::asio::ip::tcp;
using test::patience;

std::string headerValue(const HttpRequest& request, const std::string& name) {
    for (const auto& [key, value] : request.headers) {
        if (key == name) return value;
    }
    return {};
}

Task<std::optional<HttpResponse>> mirror(HttpRequest request, bool) {
    co_return HttpResponse{503, "text/x-mirror",
                           request.method + " " + request.target + " " + headerValue(request, "Accept") +
                               " " + headerValue(request, "Host") + " " + request.body};
}

TEST(HttpClient, SendsARequestAndReturnsTheResponseWhateverItsStatus) {
    boost::asio::io_context io;
    SystemClock clock;
    test::LoopbackHttpServer server(io, mirror);
    HttpRequest request{"POST", "/a/b?c", {{"Accept", "application/json"}}, "body"};
    const auto response =
        test::runTask(io, fetchHttp(clock, server.endpoint(), std::move(request), patience));
    EXPECT_EQ(response.status, 503U);
    EXPECT_EQ(response.contentType, "text/x-mirror");
    EXPECT_EQ(response.body, "POST /a/b?c application/json " + describe(server.endpoint()) + " body");
}

Task<std::optional<HttpResponse>> answerAtLength(HttpRequest, bool) {
    co_return HttpResponse{200, "text/plain", std::string(20 * 1024 * 1024, 'x')};
}

TEST(HttpClient, TakesALongResponse) {
    boost::asio::io_context io;
    SystemClock clock;
    test::LoopbackHttpServer server(io, answerAtLength);
    const auto response = test::runTask(io, fetchHttp(clock, server.endpoint(), HttpRequest{}, patience));
    EXPECT_EQ(response.body.size(), 20U * 1024 * 1024);
}

/// Accepts one peer, sends it `bytes` after its request, and hangs up unless it is to be `silent`.
Task<> serveOnce(tcp::acceptor& acceptor, std::string bytes, bool silent) {
    auto socket = co_await acceptor.async_accept(boost::asio::use_awaitable);
    std::array<char, 4096> request;
    co_await socket.async_read_some(boost::asio::buffer(request), boost::asio::use_awaitable);
    co_await boost::asio::async_write(socket, boost::asio::buffer(bytes), boost::asio::use_awaitable);
    if (silent) {
        co_await socket.async_read_some(boost::asio::buffer(request), boost::asio::use_awaitable);
    }
}

NetworkError::Case failureOf(std::string bytes, bool silent, std::chrono::milliseconds timeout) {
    boost::asio::io_context io;
    SystemClock clock;
    tcp::acceptor acceptor(io, {boost::asio::ip::address_v4::loopback(), 0});
    boost::asio::co_spawn(io, serveOnce(acceptor, std::move(bytes), silent), boost::asio::detached);
    const Endpoint endpoint{"127.0.0.1", acceptor.local_endpoint().port()};
    try {
        test::runTask(io, fetchHttp(clock, endpoint, HttpRequest{}, timeout));
    } catch (const NetworkError& error) {
        return error.which();
    }
    throw std::runtime_error("the exchange did not fail");
}

TEST(HttpClient, TellsFailuresApart) {
    using Case = NetworkError::Case;
    EXPECT_EQ(failureOf("", false, patience), Case::connectionClosed);
    EXPECT_EQ(failureOf("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nshort", false, patience),
              Case::connectionClosed);
    EXPECT_EQ(failureOf("this is no HTTP\r\n\r\n", false, patience), Case::invalidResponse);
    EXPECT_EQ(failureOf("", true, std::chrono::milliseconds(50)), Case::timedOut);
    EXPECT_EQ(
        failureOf("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nshort", true, std::chrono::milliseconds(50)),
        Case::timedOut);
}

TEST(HttpClient, ARefusedConnectionSaysWhere) {
    boost::asio::io_context io;
    SystemClock clock;
    test::LoopbackListener listener(io, clock);
    const auto nobody = listener.endpoint();
    listener.listener().cancel();
    try {
        test::runTask(io, fetchHttp(clock, nobody, HttpRequest{}, patience));
        FAIL() << "somebody answered";
    } catch (const NetworkError& error) {
        EXPECT_EQ(std::string(error.what()),
                  "connectionFailed(\"" + describe(nobody) + ": Connection refused\")");
    }
}

/// A server that notes what it is sent on one connection, and whether the client had made sure before.
struct NotingServer {
    explicit NotingServer(boost::asio::io_context& io)
        : acceptor(io, {boost::asio::ip::address_v4::loopback(), 0}), changed(io.get_executor()) {}

    Endpoint endpoint() const { return {"127.0.0.1", acceptor.local_endpoint().port()}; }

    Task<> serve() {
        auto socket = co_await acceptor.async_accept(boost::asio::use_awaitable);
        isConnected = true;
        changed.notifyAll();
        std::array<char, 4096> bytes;
        constexpr auto token = boost::asio::as_tuple(boost::asio::use_awaitable);
        auto [error, size] = co_await socket.async_read_some(boost::asio::buffer(bytes), token);
        wasMadeSure = isMadeSure;
        received.assign(bytes.data(), size);
        const std::string answer = "HTTP/1.1 204 No Content\r\n\r\n";
        if (!error) {
            co_await boost::asio::async_write(socket, boost::asio::buffer(answer), token);
        }
        hasEnded = true;
    }

    /// Gives bytes that are sent too early the time to arrive.
    Task<> makeSure() {
        while (!isConnected) {
            co_await changed.wait();
        }
        SystemClock clock;
        co_await clock.sleepFor(std::chrono::milliseconds(50));
        isMadeSure = true;
    }

    Task<> refuse() {
        co_await makeSure();
        throw std::runtime_error("not now");
    }

    tcp::acceptor acceptor;
    Event changed;
    bool isConnected = false;
    bool isMadeSure = false;
    bool wasMadeSure = false;
    bool hasEnded = false;
    std::string received;
};

TEST(HttpClient, MakesSureBetweenConnectingAndSending) {
    boost::asio::io_context io;
    SystemClock clock;
    NotingServer server(io);
    boost::asio::co_spawn(io, server.serve(), boost::asio::detached);
    const auto makeSure = [&] { return server.makeSure(); };
    const auto response =
        test::runTask(io, fetchHttp(clock, server.endpoint(), HttpRequest{}, patience, makeSure));
    EXPECT_EQ(response.status, 204U);
    EXPECT_TRUE(server.wasMadeSure);
    EXPECT_TRUE(server.received.starts_with("GET / HTTP/1.1\r\n"));
}

TEST(HttpClient, SendsNothingWhenTheLastMomentRefuses) {
    boost::asio::io_context io;
    SystemClock clock;
    NotingServer server(io);
    boost::asio::co_spawn(io, server.serve(), boost::asio::detached);
    const auto refuse = [&] { return server.refuse(); };
    std::string told;
    try {
        test::runTask(io, fetchHttp(clock, server.endpoint(), HttpRequest{}, patience, refuse));
    } catch (const std::runtime_error& error) {
        told = error.what();
    }
    EXPECT_EQ(told, "not now");
    EXPECT_TRUE(test::runUntil(io, [&] { return server.hasEnded; }));
    EXPECT_TRUE(server.wasMadeSure);
    EXPECT_EQ(server.received, "");
}

TEST(HttpClient, MakesSureOfNothingWithoutAConnection) {
    boost::asio::io_context io;
    SystemClock clock;
    NotingServer server(io);
    const auto nobody = server.endpoint();
    server.acceptor.close();
    bool wasAsked = false;
    const auto note = [&] {
        wasAsked = true;
        return server.makeSure();
    };
    EXPECT_THROW(test::runTask(io, fetchHttp(clock, nobody, HttpRequest{}, patience, note)), NetworkError);
    EXPECT_FALSE(wasAsked);
}

TEST(Http, DescribesEndpoints) {
    EXPECT_EQ(describe({"127.0.0.1", 8086}), "127.0.0.1:8086");
    EXPECT_EQ(describe({"::1", 80}), "[::1]:80");
}

} // namespace
} // namespace tarnly
