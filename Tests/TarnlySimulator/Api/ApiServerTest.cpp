#include "TarnlySimulator/Api/ApiServer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <vector>

#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly::simulator {
namespace {

using test::RawPeer;
constexpr auto patience = std::chrono::seconds(20);

Task<std::optional<HttpResponse>> echo(HttpRequest request, bool isUpgrade) {
    if (isUpgrade && request.target == "/") co_return std::nullopt;
    if (request.target == "/absent") co_return std::nullopt;
    co_return HttpResponse{200, "text/plain", request.method + " " + request.target + " " + request.body};
}

Task<std::string> converse(boost::asio::io_context& io, Endpoint endpoint, std::string bytes) {
    RawPeer peer(io);
    co_await peer.connect(endpoint);
    co_await peer.write(std::move(bytes));
    auto answer = co_await peer.readUntilEnd();
    co_return answer;
}

class ApiServerTest : public testing::Test {
  protected:
    void start(ApiServer::RequestHandler onRequest = echo) {
        server.emplace(io.get_executor(), clock, 0, std::move(onRequest),
                       [this](std::shared_ptr<WebSocketConnection> connection) {
                           connections.push_back(std::move(connection));
                       });
    }

    /// Answers every request with `response`, and notes it.
    void startAnswering(HttpResponse response) {
        start([this, response](HttpRequest request, bool) {
            requests.push_back(std::move(request));
            return respond(response);
        });
    }

    Endpoint endpoint() const { return {"127.0.0.1", server->port()}; }

    HttpResponse get(std::string target) {
        HttpRequest request;
        request.target = std::move(target);
        return test::runTask(io, fetchHttp(clock, endpoint(), std::move(request), patience));
    }

    std::string wire(std::string bytes) {
        return test::runTask(io, converse(io, endpoint(), std::move(bytes)));
    }

    static Task<std::optional<HttpResponse>> respond(HttpResponse response) { co_return response; }

    boost::asio::io_context io;
    SystemClock clock;
    std::vector<HttpRequest> requests;
    std::vector<std::shared_ptr<WebSocketConnection>> connections;
    std::optional<ApiServer> server;
};

TEST_F(ApiServerTest, LetsTheApplicationAnswerFirst) {
    start();
    EXPECT_EQ(get("/x?y=1").body, "GET /x?y=1 ");
    EXPECT_EQ(get("/absent").status, 426U);
}

TEST_F(ApiServerTest, KeepsTheConnectionForPipelinedRequestsWithBodies) {
    start();
    const auto answer = wire(
        "POST /a HTTP/1.1\r\nContent-Length: 3\r\n\r\none"
        "POST /b HTTP/1.1\r\nContent-Length: 3\r\nConnection: close\r\n\r\ntwo");
    EXPECT_NE(answer.find("POST /a one"), std::string::npos);
    EXPECT_NE(answer.find("POST /b two"), std::string::npos);
}

TEST_F(ApiServerTest, ReadsARequest) {
    startAnswering({});
    wire(
        "POST /api/v2/command/7/activate HTTP/1.1\r\nHost: x\r\nAccept: application/json\r\n"
        "Connection: close\r\nContent-Length: 14\r\n\r\n{\"duration\":0}");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].target, "/api/v2/command/7/activate");
    EXPECT_EQ(requests[0].body, "{\"duration\":0}");
    const std::pair<std::string, std::string> accept("Accept", "application/json");
    EXPECT_NE(std::ranges::find(requests[0].headers, accept), requests[0].headers.end());
}

TEST_F(ApiServerTest, WritesAResponseAndEndsOnlyWhenAsked) {
    startAnswering({404, "text/html", "<p>"});
    EXPECT_EQ(wire("GET / HTTP/1.1\r\nConnection: close\r\n\r\n"),
              "HTTP/1.1 404 Not Found\r\nContent-Type: text/html\r\nContent-Length: 3\r\nConnection: "
              "close\r\n\r\n<p>");
    startAnswering({200, "", ""});
    EXPECT_EQ(wire("GET / HTTP/1.1\r\n\r\nGET / HTTP/1.1\r\nConnection: close\r\n\r\n"),
              "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: keep-alive\r\n\r\n"
              "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
}

TEST_F(ApiServerTest, RefusesWhatIsNoRequest) {
    start();
    for (const char* bytes : {"\x16\x03\x01 hello\r\n\r\n", "nonsense\r\n\r\n",
                              "POST / HTTP/1.1\r\nContent-Length: 99999999\r\n\r\n",
                              "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"}) {
        EXPECT_EQ(wire(bytes).substr(0, 12), "HTTP/1.1 400") << bytes;
    }
    EXPECT_EQ(wire("GET /" + std::string(20000, 'x')), "");
}

/// Hangs up in the middle of a request.
Task<std::string> breakOff(boost::asio::io_context& io, Endpoint endpoint, std::string bytes) {
    RawPeer peer(io);
    co_await peer.connect(endpoint);
    co_await peer.write(std::move(bytes));
    peer.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send);
    auto answer = co_await peer.readUntilEnd();
    co_return answer;
}

TEST_F(ApiServerTest, ARequestThatBreaksOffGetsNoAnswer) {
    start();
    for (const char* bytes : {"", "GET / HTTP/1.1\r\nHost", "POST / HTTP/1.1\r\nContent-Length: 3\r\n\r\non"})
        EXPECT_EQ(test::runTask(io, breakOff(io, endpoint(), bytes)), "") << bytes;
}

TEST_F(ApiServerTest, CanRefuseAnUpgrade) {
    start();
    const auto answer = wire(
        "GET /elsewhere HTTP/1.1\r\nHost: x\r\nConnection: Upgrade, close\r\nUpgrade: websocket\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    EXPECT_EQ(answer.substr(0, 12), "HTTP/1.1 200");
    EXPECT_TRUE(connections.empty());
}

/// Upgrades after a plain request on the same connection, with a first frame in the same packet.
Task<> upgradeLate(boost::asio::io_context& io, Endpoint endpoint) {
    RawPeer peer(io);
    co_await peer.connect(endpoint);
    co_await peer.write("GET /a HTTP/1.1\r\n\r\n");
    const auto answer = co_await peer.read(12);
    EXPECT_EQ(answer, "HTTP/1.1 200");
    co_await peer.write(
        "GET / HTTP/1.1\r\nHost: x\r\nConnection: keep-alive, Upgrade\r\nUpgrade: websocket\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n" +
        RawPeer::frame(0x81, "early") + RawPeer::frame(0x88, ""));
    const auto rest = co_await peer.readUntilEnd();
    EXPECT_NE(rest.find("HTTP/1.1 101 "), std::string::npos);
}

TEST_F(ApiServerTest, HandsOverWhatHasBecomeAWebSocket) {
    start();
    boost::asio::co_spawn(io, upgradeLate(io, endpoint()), boost::asio::detached);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (connections.empty() && io.run_one_until(deadline) > 0) {
    }
    ASSERT_EQ(connections.size(), 1U);
    const auto message = test::runTask(io, connections[0]->receive());
    ASSERT_TRUE(message);
    EXPECT_EQ(message->content, "early");
    EXPECT_FALSE(test::runTask(io, connections[0]->receive()));
}

TEST_F(ApiServerTest, ServesTheLoopbackAddressAlone) {
    start();
    try {
        test::runTask(io, fetchHttp(clock, {"::1", server->port()}, HttpRequest{}, patience));
        FAIL() << "somebody answered";
    } catch (const NetworkError& error) {
        EXPECT_EQ(error.which(), NetworkError::Case::connectionFailed);
    }
}

TEST_F(ApiServerTest, APortInUseIsAClearError) {
    start();
    try {
        ApiServer second(io.get_executor(), clock, server->port(), echo, {});
        FAIL() << "the port was free";
    } catch (const NetworkError& error) {
        EXPECT_EQ(std::string(error.what()),
                  "listenFailed(\"port " + std::to_string(server->port()) + ": Address already in use\")");
    }
}

} // namespace
} // namespace tarnly::simulator
