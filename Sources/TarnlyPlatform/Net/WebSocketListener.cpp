#include "TarnlyPlatform/Net/WebSocketListener.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>
#include <iterator>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Net/TcpSockets.hpp"
#include "TarnlyPlatform/Net/WebAnswer.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;
using HeadParser = http::request_parser<http::empty_body>;

/// For the head of a request, and again for the answer to one that is no upgrade.
constexpr auto patience = std::chrono::seconds(10);
constexpr std::uint32_t largestRequestHead = 16 * 1024;
/// Of a head: each takes more memory than it has bytes.
constexpr std::ptrdiff_t mostFields = 64;

/// Neither silence nor more than anybody has to say is worth an answer.
bool deservesAnswer(const error_code& error) {
    return error.category() != boost::system::system_category() && error != http::error::end_of_stream &&
           error != http::error::partial_message && error != http::error::header_limit;
}

std::ptrdiff_t fieldCount(const HeadParser& head) {
    const auto& fields = head.get();
    return std::distance(fields.begin(), fields.end());
}

HttpRequest requestFrom(const HeadParser& head) {
    const auto& message = head.get();
    HttpRequest request;
    request.method = message.method_string();
    request.target = message.target();
    for (const auto& header : message)
        request.headers.emplace_back(header.name_string(), header.value());
    return request;
}

} // namespace

struct WebSocketListener::State {
    Clock& clock;
    const WebSocketLimits limits;
    const std::shared_ptr<Admission> admission;
    std::optional<BrowserGate> gate;
    const std::shared_ptr<const WebPages> pages;
    const std::function<void(const PeerNetwork&)> onPageVisit;
    const ConnectionHandler onConnection;
    bool isCancelled = false;

    static Task<> serve(std::shared_ptr<State> state, tcp::socket socket);
    std::shared_ptr<Visit> admit(const std::shared_ptr<tcp::socket>& peer) const;
    std::optional<WebAnswer> refusalOf(const HttpRequest& request, bool isUpgrade, const Visit* visit) const;
    WebAnswer showPage(const HttpRequest& request, const Visit* visit) const;
};

/// Reads the head of one request, and makes the peer a WebSocket if it asks for that.
Task<> WebSocketListener::State::serve(std::shared_ptr<State> state, tcp::socket socket) {
    const auto peer = std::make_shared<tcp::socket>(std::move(socket));
    auto visit = state->admit(peer);
    SocketDeadline deadline(state->clock, peer);
    deadline.expireAfter(patience);
    beast::flat_buffer received;
    HeadParser head;
    head.header_limit(largestRequestHead);
    error_code error;
    while (!error && !head.is_header_done()) {
        auto [failure, size] = co_await http::async_read_some(*peer, received, head, asTuple);
        error = failure;
        if (fieldCount(head) > mostFields) co_return;
    }
    if (state->isCancelled || (error && !deservesAnswer(error))) co_return;
    const bool isRequest = !error && !head.chunked();
    std::optional<WebAnswer> answer;
    HttpRequest request;
    if (isRequest) {
        request = requestFrom(head);
        const bool isUpgrade = beast::websocket::is_upgrade(head.get());
        answer = state->refusalOf(request, isUpgrade, visit.get());
        if (!answer && !isUpgrade) answer = state->showPage(request, visit.get());
    } else {
        answer = WebAnswer{400, "That is not a request that this port understands.\n"};
    }
    if (answer) {
        deadline.expireAfter(patience);
        co_await give(*peer, std::move(*answer));
        co_return;
    }
    deadline.cancel();
    auto rest = beast::buffers_to_string(received.data());
    auto connection = acceptWebSocket(std::move(*peer), state->clock, request, std::move(rest), state->limits,
                                      std::move(visit));
    if (connection) state->onConnection(std::move(connection));
}

std::shared_ptr<Visit> WebSocketListener::State::admit(const std::shared_ptr<tcp::socket>& peer) const {
    if (!admission) return nullptr;
    error_code isGone;
    auto address = peer->remote_endpoint(isGone).address();
    // This computer reaches itself by each of its addresses.
    if (address == peer->local_endpoint(isGone).address()) address = asio::ip::address_v4::loopback();
    auto close = [weak = std::weak_ptr(peer)] {
        error_code ignored;
        if (const auto present = weak.lock()) present->close(ignored);
    };
    return admission->admit(isGone ? PeerNetwork() : PeerNetwork(address), std::move(close));
}

std::optional<WebAnswer> WebSocketListener::State::refusalOf(const HttpRequest& request, bool isUpgrade,
                                                             const Visit* visit) const {
    if (gate) {
        auto reason = gate->refusalOf(request, isUpgrade);
        if (reason) return WebAnswer{403, std::move(*reason) + "\n"};
    }
    if (!isUpgrade && !pages) return WebAnswer{426, "This port speaks WebSocket.\n"};
    if (visit == nullptr || visit->hasRoom()) return std::nullopt;
    return WebAnswer{
        503,
        "There are as many clients here as may be. Disconnect one, or start the companion with a "
        "larger --max-clients.\n"};
}

WebAnswer WebSocketListener::State::showPage(const HttpRequest& request, const Visit* visit) const {
    auto page = pageAnswer(*pages, request);
    const bool isFromElsewhere = visit != nullptr && !visit->from().isLoopback();
    if (page.page != nullptr && isFromElsewhere && onPageVisit) onPageVisit(visit->from());
    return page;
}

WebSocketListener::WebSocketListener(asio::any_io_executor executor, Clock& clock, Options options,
                                     ConnectionHandler onConnection)
    : state_(std::make_shared<State>(clock, options.limits, std::move(options.admission),
                                     std::move(options.gate), std::move(options.pages),
                                     std::move(options.onPageVisit), std::move(onConnection))),
      acceptor_(std::move(executor), clock, options.port, options.reach,
                [state = state_](tcp::socket socket) { return State::serve(state, std::move(socket)); }) {}

WebSocketListener::~WebSocketListener() { cancel(); }

std::uint16_t WebSocketListener::port() const { return acceptor_.port(); }

void WebSocketListener::useGate(BrowserGate gate) { state_->gate = std::move(gate); }

void WebSocketListener::cancel() {
    state_->isCancelled = true;
    acceptor_.cancel();
}

} // namespace tarnly
