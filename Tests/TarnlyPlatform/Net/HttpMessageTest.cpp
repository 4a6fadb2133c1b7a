#include "TarnlyPlatform/Net/HttpMessage.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(HttpMessage, ReadsARequestHead) {
    const auto head = parseRequestHead(
        "POST /api/v2/command/7/activate HTTP/1.1\r\nHost: x\r\nAccept: application/json\r\nContent-Length: "
        "14\r\n\r\n");
    ASSERT_TRUE(head);
    EXPECT_EQ(head->request.method, "POST");
    EXPECT_EQ(head->request.target, "/api/v2/command/7/activate");
    EXPECT_EQ(head->contentLength, 14U);
    EXPECT_TRUE(head->keepsAlive);
    EXPECT_FALSE(head->isWebSocketUpgrade);
    const std::pair<std::string, std::string> accept("Accept", "application/json");
    EXPECT_NE(std::find(head->request.headers.begin(), head->request.headers.end(), accept),
              head->request.headers.end());
}

TEST(HttpMessage, TellsAnUpgrade) {
    const auto head = parseRequestHead(
        "GET / HTTP/1.1\r\nHost: x\r\nConnection: keep-alive, Upgrade\r\nUpgrade: websocket\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    ASSERT_TRUE(head);
    EXPECT_TRUE(head->isWebSocketUpgrade);
}

TEST(HttpMessage, ConnectionCloseEndsTheConversation) {
    const auto head = parseRequestHead("GET / HTTP/1.1\r\nConnection: close\r\n\r\n");
    ASSERT_TRUE(head);
    EXPECT_FALSE(head->keepsAlive);
}

TEST(HttpMessage, WhatIsNoRequestIsAbsent) {
    EXPECT_FALSE(parseRequestHead("nonsense\r\n\r\n"));
    EXPECT_FALSE(parseRequestHead("GET / HTTP/1.1\r\nHost"));
    EXPECT_FALSE(parseRequestHead(""));
    EXPECT_FALSE(parseRequestHead("POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"));
}

TEST(HttpMessage, FormatsAResponse) {
    EXPECT_EQ(formatResponse({404, "text/html", "<p>"}, false),
              "HTTP/1.1 404 Not Found\r\nContent-Type: text/html\r\nContent-Length: 3\r\nConnection: "
              "close\r\n\r\n<p>");
    EXPECT_EQ(formatResponse({200, "", ""}, true),
              "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: keep-alive\r\n\r\n");
}

} // namespace
} // namespace tarnly
