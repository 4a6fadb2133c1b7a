#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <string>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebPages.hpp"

namespace tarnly {

/// What a peer gets that asks for no WebSocket; the connection ends with it. A plain value.
struct WebAnswer {
    /// Of HTTP.
    unsigned status = 200;
    /// For people. Not used where there is a page.
    std::string text{};
    /// Outlives the answer; null for what is no page.
    const WebPage* page = nullptr;
    /// The page's text without its coding, where the peer does not take that.
    bool isDecoded = false;
    /// With the length of the body, and without it.
    bool isHeadOnly = false;
};

/// The answer to a request for a page: one of `pages`, 404 or 405.
WebAnswer pageAnswer(const WebPages& pages, const HttpRequest& request);

/// Gives the answer, and waits for the peer to go: a socket closed with bytes unread would take the answer
/// back. To be bounded by a deadline of the caller's.
Task<> give(boost::asio::ip::tcp::socket& peer, WebAnswer answer);

} // namespace tarnly
