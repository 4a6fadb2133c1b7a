#include "TarnlyXPlane/Link/WebApiLink.hpp"

#include <cstdlib>
#include <exception>
#include <utility>

namespace tarnly {
namespace {

constexpr std::string_view apiPath = "/api/v2";
constexpr std::chrono::seconds requestTimeout(60);

NetworkError invalidCatalogue(const std::string& url, unsigned status, const char* reason) {
    const auto shownStatus = status == 200 ? std::string() : "HTTP status " + std::to_string(status) + ": ";
    return {NetworkError::Case::invalidResponse, url + ": " + shownStatus + reason};
}

} // namespace

SharedAttempt::SharedAttempt(const boost::asio::any_io_executor& executor) : finishedEvent_(executor) {}

void SharedAttempt::finish(std::exception_ptr failure) {
    thread_.check();
    finished_ = true;
    failure_ = std::move(failure);
    finishedEvent_.notifyAll();
}

Task<> SharedAttempt::wait() {
    thread_.check();
    while (!finished_) {
        co_await finishedEvent_.wait();
    }
    if (failure_) std::rethrow_exception(failure_);
}

WebApiLink::WebApiLink(boost::asio::any_io_executor executor, Endpoint endpoint,
                       std::shared_ptr<XPlaneTransport> transport, WorkerPool& workers)
    : executor_(std::move(executor)),
      endpoint_(std::move(endpoint)),
      transport_(std::move(transport)),
      workers_(workers),
      connecting_(executor_),
      tasks_(executor_) {
    if (!isHost(endpoint_.host)) std::abort();
}

std::string WebApiLink::baseUrl() const {
    return "http://" + describe(endpoint_) + std::string(apiPath) + "/";
}

std::string WebApiLink::webSocketUrl() const { return "ws://" + describe(endpoint_) + std::string(apiPath); }

Task<> WebApiLink::ensureConnected() {
    thread_.check();
    if (connected_) co_return;
    throwIfClosed();
    const auto attempt = attempt_ ? attempt_ : startAttempt();
    co_await attempt->wait();
}

std::shared_ptr<SharedAttempt> WebApiLink::startAttempt() {
    auto attempt = std::make_shared<SharedAttempt>(executor_);
    attempt_ = attempt;
    auto tellWhoWaits = [link = shared_from_this()](const std::exception_ptr& failure) {
        link->finishAttempt(failure);
    };
    // May come to its end before this returns.
    connecting_.spawn(connect(shared_from_this()), std::move(tellWhoWaits));
    return attempt;
}

void WebApiLink::finishAttempt(const std::exception_ptr& failure) {
    if (const auto attempt = std::exchange(attempt_, nullptr)) attempt->finish(failure);
}

Task<> WebApiLink::connect(std::shared_ptr<WebApiLink> link) {
    auto datarefIds = co_await link->fetchCatalogue("datarefs");
    datarefIds.merge(link->datarefIds_);
    link->datarefIds_ = std::move(datarefIds);
    auto commandIds = co_await link->fetchCatalogue("commands");
    commandIds.merge(link->commandIds_);
    link->commandIds_ = std::move(commandIds);
    link->throwIfClosed();

    link->webSocket_ = link->transport_->openWebSocket(link->endpoint_, std::string(apiPath));
    // A link whose receiving has failed brings no values any more: it is closed, and requests say so.
    auto closeLink = [link](const std::exception_ptr&) { link->close(); };
    link->tasks_.spawn(receiveLoop(link, link->webSocket_), closeLink);
    link->connected_ = true;
    link->finishAttempt(nullptr);
}

Task<IdsByName> WebApiLink::fetchCatalogue(std::string path) {
    auto response = co_await fetch("GET", path, "");
    const auto size = response.body.size();
    auto parse = [body = std::move(response.body)] { return idsByName(parseCatalogue(body)); };
    try {
        auto ids = co_await workers_.runSized(size, std::move(parse));
        co_return ids;
    } catch (const JsonError& error) {
        throw invalidCatalogue(baseUrl() + path, response.status, error.what());
    }
}

Task<> WebApiLink::receiveLoop(std::shared_ptr<WebApiLink> link,
                               std::shared_ptr<WebSocketConnection> webSocket) {
    for (;;) {
        auto message = co_await webSocket->receive();
        if (!message) co_return;
        if (message->opcode != WebSocketConnection::Opcode::text) continue;
        co_await link->handleMessage(std::move(message->content));
    }
}

Task<> WebApiLink::handleMessage(std::string text) {
    const auto size = text.size();
    auto parse = [text = std::move(text)]() mutable { return parseDatarefUpdate(std::move(text)); };
    auto update = co_await workers_.runSized(size, std::move(parse));
    values_.apply(std::move(update));
}

void WebApiLink::throwIfClosed() const {
    if (closed_) throw NetworkError(NetworkError::Case::connectionClosed, webSocketUrl());
}

void WebApiLink::close() {
    if (std::exchange(closed_, true)) return;
    thread_.check();
    connecting_.cancel();
    finishAttempt(
        std::make_exception_ptr(NetworkError(NetworkError::Case::connectionClosed, webSocketUrl())));
    if (webSocket_) webSocket_->cancel();
}

Task<> WebApiLink::send(std::string_view type, std::vector<DatarefEntry> datarefs) {
    thread_.check();
    WebApiRequest request;
    request.type = type;
    request.reqId = ++nextReqId_;
    request.params.datarefs = std::move(datarefs);
    auto text = encodeJson(request);
    if (!webSocket_) co_return;
    const auto webSocket = webSocket_;
    webSocket->send(std::move(text), WebSocketConnection::Kind::awaited);
    co_await webSocket->drained();
}

Task<HttpResponse> WebApiLink::post(std::string path, std::string body) {
    return fetch("POST", std::move(path), std::move(body));
}

Task<HttpResponse> WebApiLink::fetch(std::string method, std::string path, std::string body) {
    HttpRequest request;
    request.method = std::move(method);
    request.target = std::string(apiPath) + "/" + path;
    request.headers.emplace_back("Accept", "application/json");
    request.headers.emplace_back("Content-Type", "application/json");
    request.body = std::move(body);
    return transport_->fetch(endpoint_, std::move(request), requestTimeout, nullptr);
}

} // namespace tarnly
