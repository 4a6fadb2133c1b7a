#include "TarnlyPlatform/Net/WebPages.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <memory>
#include <string>
#include <utility>

#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Net/WebSocketListener.hpp"

namespace tarnly {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

SystemClock clock; // none of these tests is about time

WebPages somePages() {
    WebPages pages;
    pages.add("/", {"text/html; charset=utf-8", "<p>Hello"});
    pages.add("/a.js", {"text/javascript; charset=utf-8", "1;"});
    return pages;
}

TEST(WebPages, AreFoundByTheirPaths) {
    const auto pages = somePages();
    EXPECT_EQ(pages.find("/")->body, "<p>Hello");
    EXPECT_EQ(pages.find("/?from=a.js")->body, "<p>Hello");
    EXPECT_EQ(pages.find("/a.js")->contentType, "text/javascript; charset=utf-8");
    for (const char* absent : {"", "a.js", "/A.js", "/a.js/", "/../a.js", "//"})
        EXPECT_EQ(pages.find(absent), nullptr) << absent;
}

Task<std::string> converse(boost::asio::io_context& io, Endpoint endpoint, std::string bytes) {
    test::RawPeer peer(io);
    co_await peer.connect(endpoint);
    co_await peer.write(std::move(bytes));
    auto answer = co_await peer.readUntilEnd();
    co_return answer;
}

/// A port that has pages, as browsers see it.
struct WebPagesServedTest : testing::Test {
    WebPagesServedTest() {
        options.reach = Reach::loopbackIPv4;
        options.pages = std::make_shared<WebPages>(somePages());
        options.onPageVisit = [this](const PeerNetwork&) { ++visits; };
    }

    /// The answer to a request of one line, and whatever `headers` it has.
    std::string answerTo(const std::string& line, const std::string& headers = "",
                         const std::string& host = "127.0.0.1") {
        WebSocketListener listener(io.get_executor(), clock, options, {});
        return test::runTask(io, converse(io, {"127.0.0.1", listener.port()},
                                          line + " HTTP/1.1\r\nHost: " + host + "\r\n" + headers + "\r\n"));
    }

    boost::asio::io_context io;
    WebSocketListener::Options options;
    int visits = 0;
};

TEST_F(WebPagesServedTest, AreServedOnceAndShutIn) {
    EXPECT_EQ(answerTo("GET /", "Connection: keep-alive\r\n"),
              "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: 8\r\n"
              "Connection: close\r\nContent-Security-Policy: " +
                  std::string(pagePolicy) +
                  "\r\nX-Content-Type-Options: nosniff\r\nReferrer-Policy: no-referrer\r\n"
                  "Cache-Control: no-store\r\n\r\n<p>Hello");
    EXPECT_THAT(std::string(pagePolicy), Not(HasSubstr("unsafe")));
}

TEST_F(WebPagesServedTest, HeadIsAnsweredWithTheHeadAlone) {
    EXPECT_THAT(answerTo("HEAD /a.js"), AllOf(StartsWith("HTTP/1.1 200 "),
                                              HasSubstr("\r\nContent-Length: 2\r\n"), EndsWith("\r\n\r\n")));
}

TEST_F(WebPagesServedTest, WhatIsNotThereIsSaid) {
    EXPECT_THAT(answerTo("GET /favicon.ico"), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(answerTo("POST /api"), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(answerTo("POST /"),
                AllOf(StartsWith("HTTP/1.1 405 "), HasSubstr("\r\nAllow: GET, HEAD\r\n")));
}

TEST_F(WebPagesServedTest, WebSocketsStayWhereTheyAre) {
    options.gate.emplace("rig");
    const auto answer = answerTo("GET /",
                                 "Connection: Upgrade\r\nUpgrade: websocket\r\n"
                                 "Sec-WebSocket-Version: 12\r\n");
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 426 ")); // by the opening, not by a page
}

TEST_F(WebPagesServedTest, TheGateKeepsOthersNamesOut) {
    options.gate.emplace("rig");
    EXPECT_THAT(answerTo("GET /"), StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(answerTo("GET /", "", "rebound.example"), StartsWith("HTTP/1.1 403 "));
}

TEST_F(WebPagesServedTest, WhereThereIsNoRoomThatIsSaid) {
    AdmissionLimits limits;
    limits.peers = 0;
    options.admission = std::make_shared<Admission>(io.get_executor(), clock, limits);
    EXPECT_THAT(answerTo("GET /"), StartsWith("HTTP/1.1 503 "));
}

TEST_F(WebPagesServedTest, ThisComputerItselfIsNoVisitor) {
    options.admission = std::make_shared<Admission>(io.get_executor(), clock, AdmissionLimits());
    EXPECT_THAT(answerTo("GET /"), StartsWith("HTTP/1.1 200 "));
    EXPECT_EQ(visits, 0);
}

} // namespace
} // namespace tarnly
