#include "TarnlyPlatform/Net/WebPages.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Net/Gzip.hpp"
#include "TarnlyPlatform/Net/RealTime.hpp"
#include "TarnlyPlatform/Net/WebSocketListener.hpp"

namespace tarnly {
namespace {

using test::converse;
using test::realTime;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// "Hello, Hello, Hello" by `gzip -9n`.
constexpr char zipped[] = {'\x1f', '\x8b', '\x08', '\x00', '\x00', '\x00', '\x00', '\x00', '\x02', '\x03',
                           '\xf3', '\x48', '\xcd', '\xc9', '\xc9', '\xd7', '\x51', '\xf0', '\x40', '\xa2',
                           '\x00', '\x77', '\x23', '\xbe', '\xf6', '\x13', '\x00', '\x00', '\x00'};

WebPages somePages() {
    WebPages pages;
    pages.add("/", {"text/html; charset=utf-8", "<p>Hello"});
    pages.add("/a.js", {"text/javascript; charset=utf-8", "1;"});
    pages.add("/b-0123.js", {"text/javascript; charset=utf-8", std::string(zipped, sizeof(zipped)),
                             WebPage::Coding::gzip, WebPage::Keep::always});
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
        WebSocketListener listener(io.get_executor(), realTime, options, {});
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
                  "Cross-Origin-Resource-Policy: same-origin\r\nCache-Control: no-store\r\n\r\n<p>Hello");
    EXPECT_THAT(std::string(pagePolicy), Not(HasSubstr("unsafe")));
    EXPECT_THAT(std::string(pagePolicy), HasSubstr("frame-ancestors 'none'"));
}

TEST_F(WebPagesServedTest, WhatIsCompressedGoesAsItIsToWhoTakesIt) {
    const std::string file(zipped, sizeof(zipped));
    for (const char* taken : {"gzip", "br, GZIP;q=0.5", "*", "deflate, gzip, br"}) {
        EXPECT_THAT(answerTo("GET /b-0123.js", std::string("Accept-Encoding: ") + taken + "\r\n"),
                    AllOf(StartsWith("HTTP/1.1 200 "), HasSubstr("\r\nContent-Encoding: gzip\r\n"),
                          HasSubstr("\r\nVary: Accept-Encoding\r\n"), EndsWith("\r\n\r\n" + file)))
            << taken;
    }
}

TEST_F(WebPagesServedTest, WhoDoesNotTakeItGetsTheText) {
    for (const char* headers : {"", "Accept-Encoding: br\r\n", "Accept-Encoding: gzip;q=0\r\n",
                                "Accept-Encoding: identity, gzip;q=0.0\r\n"}) {
        EXPECT_THAT(
            answerTo("GET /b-0123.js", headers),
            AllOf(HasSubstr("\r\nContent-Length: 19\r\n"), Not(HasSubstr("Content-Encoding")),
                  HasSubstr("\r\nVary: Accept-Encoding\r\n"), EndsWith("\r\n\r\nHello, Hello, Hello")))
            << headers;
    }
    EXPECT_EQ(options.pages->find("/b-0123.js")->decoded, "Hello, Hello, Hello") << "unpacked each time";
}

TEST_F(WebPagesServedTest, WhatHasANameForItsContentMayBeKept) {
    EXPECT_THAT(answerTo("GET /b-0123.js"), HasSubstr("\r\nCache-Control: max-age=31536000, immutable\r\n"));
    EXPECT_THAT(answerTo("GET /a.js"), HasSubstr("\r\nCache-Control: no-store\r\n"));
}

TEST(Gzip, WhatIsNoneIsRefused) {
    const std::string file(zipped, sizeof(zipped));
    EXPECT_EQ(gunzipped(file), "Hello, Hello, Hello");
    for (std::size_t size = 0; size < file.size(); ++size)
        EXPECT_THROW(gunzipped(file.substr(0, size)), std::runtime_error) << size;
    auto other = file;
    other[3] = 8; // it has a name
    EXPECT_THROW(gunzipped(other), std::runtime_error);
    other = file;
    other.back() = 1; // 16 MiB and more
    EXPECT_THROW(gunzipped(other), std::runtime_error);
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
    options.admission = std::make_shared<Admission>(io.get_executor(), realTime, limits);
    EXPECT_THAT(answerTo("GET /"), StartsWith("HTTP/1.1 503 "));
}

TEST_F(WebPagesServedTest, ThisComputerItselfIsNoVisitor) {
    options.admission = std::make_shared<Admission>(io.get_executor(), realTime, AdmissionLimits());
    EXPECT_THAT(answerTo("GET /"), StartsWith("HTTP/1.1 200 "));
    EXPECT_EQ(visits, 0);
}

} // namespace
} // namespace tarnly
