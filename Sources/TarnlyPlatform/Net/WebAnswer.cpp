#include "TarnlyPlatform/Net/WebAnswer.hpp"

#include <algorithm>
#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http/rfc7230.hpp>
#include <boost/beast/http/serializer.hpp>
#include <boost/beast/http/span_body.hpp>
#include <boost/beast/http/write.hpp>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Net/Gzip.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;
using Body = http::span_body<const char>;

beast::string_view asBeast(std::string_view text) { return {text.data(), text.size()}; }

/// Whether one element of a header Accept-Encoding lets gzip in: "gzip", "*;q=0.5", and not "gzip;q=0".
bool letsGzipIn(const http::ext_list::value_type& element) {
    if (!beast::iequals(element.first, "gzip") && element.first != "*") return false;
    return std::none_of(element.second.begin(), element.second.end(), [](const auto& parameter) {
        const bool isNothing = parameter.second.find_first_not_of("0.") == beast::string_view::npos;
        return beast::iequals(parameter.first, "q") && isNothing;
    });
}

bool takesGzip(const HttpRequest& request) {
    for (const auto& [name, value] : request.headers) {
        if (!beast::iequals(name, "Accept-Encoding")) continue;
        const http::ext_list codings(value);
        if (std::any_of(codings.begin(), codings.end(), letsGzipIn)) return true;
    }
    return false;
}

void describePage(http::response<Body>& response, const WebAnswer& answer) {
    const auto& page = *answer.page;
    if (page.coding == WebPage::Coding::gzip) {
        if (!answer.isDecoded) response.set(http::field::content_encoding, "gzip");
        response.set(http::field::vary, "Accept-Encoding");
    }
    response.set("Content-Security-Policy", asBeast(pagePolicy));
    response.set("X-Content-Type-Options", "nosniff");
    response.set("Referrer-Policy", "no-referrer");
    response.set("Cross-Origin-Resource-Policy", "same-origin");
    const bool isForever = page.keep == WebPage::Keep::always;
    response.set(http::field::cache_control, isForever ? "max-age=31536000, immutable" : "no-store");
}

void describeText(http::response<Body>& response) {
    if (response.result() == http::status::upgrade_required) response.set(http::field::upgrade, "websocket");
    if (response.result() == http::status::method_not_allowed) response.set(http::field::allow, "GET, HEAD");
}

const std::string& bodyOf(const WebPage& page, bool isDecoded) {
    if (!isDecoded) return page.body;
    if (!page.decoded) page.decoded = gunzipped(page.body);
    return *page.decoded;
}

Task<> write(tcp::socket& peer, const WebAnswer& answer) {
    constexpr unsigned version = 11;
    http::response<Body> response(static_cast<http::status>(answer.status), version);
    const bool isPage = answer.page != nullptr;
    const std::string& body = isPage ? bodyOf(*answer.page, answer.isDecoded) : answer.text;
    response.body() = Body::value_type(body.data(), body.size());
    response.set(http::field::content_type, isPage ? answer.page->contentType : "text/plain; charset=utf-8");
    response.content_length(body.size());
    response.set(http::field::connection, "close");
    isPage ? describePage(response, answer) : describeText(response);
    http::response_serializer<Body> serializer(response);
    if (answer.isHeadOnly) {
        co_await http::async_write_header(peer, serializer, asTuple);
    } else {
        co_await http::async_write(peer, serializer, asTuple);
    }
}

/// Says that no more follows, and reads until the peer goes.
Task<> finish(tcp::socket& peer) {
    error_code error;
    peer.shutdown(tcp::socket::shutdown_send, error);
    std::array<char, 4096> unread;
    while (!error) {
        const auto buffer = asio::buffer(unread);
        auto [failure, size] = co_await peer.async_read_some(buffer, asTuple);
        error = failure;
    }
}

} // namespace

WebAnswer pageAnswer(const WebPages& pages, const HttpRequest& request) {
    const auto* page = pages.find(request.target);
    if (page == nullptr) return {404, "There is no such page here. Try /\n"};
    const bool isHead = request.method == "HEAD";
    if (!isHead && request.method != "GET") return {405, "This page can only be read.\n"};
    const bool isDecoded = page->coding == WebPage::Coding::gzip && !takesGzip(request);
    return {200, {}, page, isDecoded, isHead};
}

Task<> give(tcp::socket& peer, WebAnswer answer) {
    co_await write(peer, answer);
    co_await finish(peer);
}

} // namespace tarnly
