#include "TarnlyPlatform/Net/WebSocketListener.hpp"

#include <gtest/gtest.h>

#include "Support/LoopbackListener.hpp"
#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"
#include "TarnlyPlatform/Net/ListenError.hpp"
#include "TarnlyPlatform/Net/RealTime.hpp"

namespace tarnly {
namespace {

using test::converse;
using test::patience;
using test::RawPeer;
using test::realTime;

Task<HttpResponse> get(test::LoopbackListener& listener, std::string target) {
    HttpRequest request;
    request.target = std::move(target);
    auto response = co_await fetchHttp(realTime, listener.endpoint(), std::move(request), patience);
    co_return response;
}

TEST(WebSocketListener, AnswersPlainRequestsWith426) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    EXPECT_EQ(test::runTask(io, get(listener, "/")).status, 426U);
}

/// The beginning of the answer; `peer` stays.
Task<std::string> converseUpTo(RawPeer& peer, Endpoint endpoint, std::string bytes) {
    co_await peer.connect(endpoint);
    co_await peer.write(std::move(bytes));
    auto beginning = co_await peer.read(12);
    co_return beginning;
}

TEST(WebSocketListener, RefusesWhatIsNoRequest) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    const auto nonsense = test::runTask(io, converse(io, listener.endpoint(), "\x16\x03\x01 hello\r\n\r\n"));
    EXPECT_EQ(nonsense.substr(0, 12), "HTTP/1.1 400");
    const auto endless =
        test::runTask(io, converse(io, listener.endpoint(), "GET /" + std::string(20000, 'x')));
    EXPECT_EQ(endless, "");
    const auto huge = test::runTask(
        io, converse(io, listener.endpoint(), "POST / HTTP/1.1\r\nContent-Length: 99999999\r\n\r\n"));
    EXPECT_EQ(huge.substr(0, 12), "HTTP/1.1 400");
}

TEST(WebSocketListener, RefusesABodyOfUnknownLength) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    const auto chunked = test::runTask(
        io, converse(io, listener.endpoint(), "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"));
    EXPECT_EQ(chunked.substr(0, 12), "HTTP/1.1 400");
}

TEST(WebSocketListener, AnswersOnlyOneRequest) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    const auto answer = test::runTask(io, converse(io, listener.endpoint(),
                                                   "POST /a HTTP/1.1\r\nContent-Length: 3\r\n\r\none"
                                                   "GET /b HTTP/1.1\r\n\r\n"));
    EXPECT_EQ(answer,
              "HTTP/1.1 426 Upgrade Required\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: "
              "28\r\nConnection: close\r\nUpgrade: websocket\r\n\r\nThis port speaks WebSocket.\n");
}

Task<std::string> answerBeforeTheBody(boost::asio::io_context& io, Endpoint endpoint) {
    RawPeer peer(io);
    co_await peer.connect(endpoint);
    co_await peer.write("POST / HTTP/1.1\r\nContent-Length: 100000\r\n\r\n");
    auto answer = co_await peer.read(1);
    co_await peer.write(std::string(100000, 'x'));
    const auto rest = co_await peer.readUntilEnd();
    answer += rest;
    co_return answer;
}

TEST(WebSocketListener, ABodyThatComesLateDoesNotTakeTheAnswerBack) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    const auto answer = test::runTask(io, answerBeforeTheBody(io, listener.endpoint()));
    EXPECT_NE(answer.find("This port speaks WebSocket."), std::string::npos);
}

TEST(WebSocketListener, TellsAnUpgradeAmongOtherConnectionOptions) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    RawPeer peer(io);
    const auto head = test::runTask(
        io, converseUpTo(peer, listener.endpoint(),
                         "GET / HTTP/1.1\r\nHost: x\r\nConnection: keep-alive, Upgrade\r\nUpgrade: "
                         "websocket\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: "
                         "dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n"));
    EXPECT_EQ(head, "HTTP/1.1 101");
}

TEST(WebSocketListener, RefusesAnotherWebSocketVersion) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    const auto answer = test::runTask(
        io, converse(io, listener.endpoint(),
                     "GET / HTTP/1.1\r\nHost: x\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n"
                     "Sec-WebSocket-Version: 8\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n"));
    EXPECT_EQ(answer.substr(0, 10), "HTTP/1.1 4");
}

TEST(WebSocketListener, APortInUseIsAClearError) {
    boost::asio::io_context io;
    test::LoopbackListener first(io, realTime);
    WebSocketListener::Options options;
    options.port = first.endpoint().port;
    options.reach = Reach::loopbackIPv4;
    try {
        WebSocketListener second(io.get_executor(), realTime, options, {});
        FAIL() << "the port was free";
    } catch (const ListenError& error) {
        EXPECT_EQ(error.which(), NetworkError::Case::listenFailed);
        EXPECT_EQ(std::string(error.what()),
                  "listenFailed(\"port " + std::to_string(options.port) + ": Address already in use\")");
        EXPECT_EQ(error.told(), error.what());
    }
}

TEST(WebSocketListener, ServesBothFamilies) {
    boost::asio::io_context io;
    WebSocketListener listener(io.get_executor(), realTime, {}, {});
    for (const char* host : {"127.0.0.1", "::1"}) {
        const Endpoint endpoint{host, listener.port()};
        const auto response = test::runTask(io, fetchHttp(realTime, endpoint, HttpRequest{}, patience));
        EXPECT_EQ(response.status, 426U) << host;
    }
}

TEST(WebSocketListener, ACancelledListenerAcceptsNobody) {
    boost::asio::io_context io;
    test::LoopbackListener listener(io, realTime);
    listener.listener().cancel();
    listener.listener().cancel();
    EXPECT_THROW(test::runTask(io, get(listener, "/")), NetworkError);
}

} // namespace
} // namespace tarnly
