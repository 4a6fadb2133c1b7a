#include "TarnlyPlatform/Net/HttpMessage.hpp"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/status.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

namespace tarnly {

namespace http = boost::beast::http;

std::optional<HttpRequestHead> parseRequestHead(std::string_view head) {
    http::request_parser<http::empty_body> parser;
    parser.header_limit(static_cast<std::uint32_t>(head.size()));
    boost::system::error_code error;
    parser.put(boost::asio::buffer(head), error);
    if (error || !parser.is_header_done() || parser.chunked()) return std::nullopt;

    const auto& message = parser.get();
    HttpRequestHead result;
    result.request.method = message.method_string();
    result.request.target = message.target();
    for (const auto& header : message) {
        result.request.headers.emplace_back(header.name_string(), header.value());
    }
    result.isWebSocketUpgrade = boost::beast::websocket::is_upgrade(message);
    result.keepsAlive = message.keep_alive();
    result.contentLength = static_cast<std::size_t>(parser.content_length().value_or(0));
    return result;
}

std::string formatResponse(const HttpResponse& response, bool keepsAlive) {
    const auto reason = http::obsolete_reason(http::int_to_status(response.status));
    std::string text = "HTTP/1.1 " + std::to_string(response.status) + " " + std::string(reason) + "\r\n";
    if (!response.contentType.empty()) text += "Content-Type: " + response.contentType + "\r\n";
    text += "Content-Length: " + std::to_string(response.body.size()) + "\r\n";
    text += keepsAlive ? "Connection: keep-alive\r\n" : "Connection: close\r\n";
    if (response.status == 426) text += "Upgrade: websocket\r\n";
    return text + "\r\n" + response.body;
}

} // namespace tarnly
