#include "TarnlyXPlane/Link/WebApiLink.hpp"

#include <exception>
#include <new>
#include <utility>

#include "TarnlyPlatform/Base/LoopWatch.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"

namespace tarnly {
namespace {

/// How long a command waits for a sign that its link lives: where pings are answered, and where not.
constexpr std::chrono::seconds confirmPatience(2);
constexpr std::chrono::milliseconds guessPatience(500);
constexpr std::chrono::milliseconds confirmLook(10);

std::vector<DatarefEntry> entries(const std::vector<std::int64_t>& ids) {
    std::vector<DatarefEntry> result;
    result.reserve(ids.size());
    for (const auto id : ids)
        result.emplace_back().id = id;
    return result;
}

} // namespace

WebApiLink::WebApiLink(boost::asio::any_io_executor executor, Endpoint endpoint,
                       std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers)
    : executor_(std::move(executor)),
      transport_(std::move(transport)),
      rest_(std::move(endpoint), transport_, workers),
      clock_(clock),
      workers_(workers),
      connecting_(executor_),
      tasks_(executor_),
      endedEvent_(executor_),
      valuesEvent_(executor_),
      liveness_(clock.now()) {}

std::string WebApiLink::webSocketUrl() const {
    return "ws://" + describe(rest_.endpoint()) + std::string(webApiPath);
}

// Connecting

Task<> WebApiLink::ensureConnected() {
    thread_.check();
    if (connected_) co_return;
    throwIfClosed();
    const auto attempt = attempt_ ? attempt_ : startAttempt();
    co_await SharedAttempt::wait(attempt);
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
    auto datarefIds = co_await link->rest_.catalogue("datarefs");
    link->datarefs_.replace(std::move(datarefIds), link->clock_.now());
    auto commandIds = co_await link->rest_.catalogue("commands");
    link->commands_.replace(std::move(commandIds), link->clock_.now());
    link->throwIfClosed();
    co_await openWebSocket(link);
    link->connected_ = true;
    link->finishAttempt(nullptr);
}

Task<> WebApiLink::openWebSocket(std::shared_ptr<WebApiLink> link) {
    const auto webSocket = link->transport_->openWebSocket(link->rest_.endpoint(), std::string(webApiPath));
    link->webSocket_ = webSocket;
    std::optional<NetworkError> failure;
    try {
        co_await webSocket->opened();
    } catch (const NetworkError& error) {
        failure = error;
    }
    if (failure && !link->closed_) {
        link->webSocket_ = nullptr;
        webSocket->cancel();
        const bool isDeclined = failure->payload().find("handshake") != std::string::npos;
        if (isDeclined) throw refusal(failure->payload(), "");
        throw failureOfConnecting(*failure);
    }
    link->throwIfClosed();
    link->liveness_ = Liveness(link->clock_.now());
    link->lastMessageAt_ = link->clock_.now();
    // A link whose receiving has failed brings no values any more.
    link->tasks_.spawn(receiveLoop(link, webSocket), link->closeOnFailure());
}

Task<> WebApiLink::receiveLoop(std::shared_ptr<WebApiLink> link,
                               std::shared_ptr<WebSocketConnection> webSocket) {
    for (;;) {
        auto message = co_await webSocket->receive();
        if (!message) break;
        if (link->wasSilent_) link->look();
        if (message->opcode != WebSocketConnection::Opcode::text) continue;
        co_await link->handleMessage(std::move(message->content));
    }
    link->end();
}

// The end

void WebApiLink::throwIfClosed() const {
    if (closed_) throw NetworkError(NetworkError::Case::connectionClosed, webSocketUrl());
}

void WebApiLink::throwIfEnded() const {
    if (hasEnded_) throw LinkEnded(NetworkError::Case::connectionClosed, webSocketUrl());
}

void WebApiLink::end() {
    if (std::exchange(hasEnded_, true)) return;
    endedEvent_.notifyAll();
    valuesEvent_.notifyAll();
}

Task<> WebApiLink::ended() {
    thread_.check();
    while (!hasEnded_) {
        co_await endedEvent_.wait();
    }
}

void WebApiLink::close() {
    if (std::exchange(closed_, true)) return;
    thread_.check();
    end();
    onChange_ = nullptr;
    connecting_.cancel();
    tasks_.cancel();
    finishAttempt(
        std::make_exception_ptr(NetworkError(NetworkError::Case::connectionClosed, webSocketUrl())));
    for (auto* catalogue : {&datarefs_, &commands_}) {
        if (const auto loading = std::exchange(catalogue->loading, nullptr)) {
            loading->finish(
                std::make_exception_ptr(LinkEnded(NetworkError::Case::connectionClosed, webSocketUrl())));
        }
    }
    if (webSocket_) webSocket_->cancel();
}

TaskGroup::OnFailure WebApiLink::closeOnFailure() {
    return [weak = weak_from_this()](const std::exception_ptr&) {
        if (const auto link = weak.lock()) link->close();
    };
}

// Requests

Task<> WebApiLink::send(std::string_view type, std::vector<DatarefEntry> datarefs) {
    const auto reqId = ++nextReqId_;
    queue(reqId, type, std::move(datarefs));
    co_await drained();
}

void WebApiLink::queue(std::int64_t reqId, std::string_view type, std::vector<DatarefEntry> datarefs) {
    thread_.check();
    WebApiRequest request;
    request.type = type;
    request.reqId = reqId;
    request.params.datarefs = std::move(datarefs);
    auto text = encodeJson(request);
    if (!webSocket_) return;
    throwIfEnded();
    webSocket_->send(std::move(text), WebSocketConnection::Kind::awaited);
}

Task<> WebApiLink::drained() {
    if (!webSocket_) co_return;
    const auto webSocket = webSocket_;
    try {
        co_await webSocket->drained();
    } catch (const NetworkError& error) {
        end(); // also where nobody has noticed yet: who tries again is to find the next link
        throw LinkEnded(error);
    }
}

Task<> WebApiLink::subscribe(std::vector<std::int64_t> ids) {
    throwIfEnded();
    bool isQueued = false;
    try {
        isQueued = queueSubscription(ids);
    } catch (const std::bad_alloc&) {
        end(); // it may count as asked for, and nobody has asked: the next link does
        throw;
    }
    if (isQueued) {
        co_await drained();
    }
}

bool WebApiLink::queueSubscription(const std::vector<std::int64_t>& ids) {
    auto messages = subscriptions_.messagesFor(ids, clock_.now());
    for (auto& message : messages) {
        const auto reqId = ++nextReqId_;
        auto wanted = entries(message);
        subscriptions_.noteSent(reqId, std::move(message));
        queue(reqId, WebApiType::subscribeValues, std::move(wanted));
    }
    return !messages.empty();
}

Task<> WebApiLink::subscribeSingly(std::shared_ptr<WebApiLink> link, std::vector<std::int64_t> ids) {
    for (const auto id : ids) {
        const auto reqId = ++link->nextReqId_;
        auto wanted = entries({id});
        link->subscriptions_.noteSent(reqId, {id});
        link->queue(reqId, WebApiType::subscribeValues, std::move(wanted));
        co_await link->drained();
    }
}

Task<HttpResponse> WebApiLink::post(std::string path, std::string body) {
    auto confirmLink = [link = shared_from_this()] { return confirm(link); };
    return rest_.post(std::move(path), std::move(body), std::move(confirmLink));
}

Task<> WebApiLink::confirm(std::shared_ptr<WebApiLink> link) {
    if (!link->webSocket_) co_return;
    const auto webSocket = link->webSocket_;
    const bool answersPings = webSocket->signsOfLife().pongs > 0;
    const auto pongs = webSocket->signsOfLife().pongs;
    const auto patience = answersPings ? Clock::Duration(confirmPatience) : Clock::Duration(guessPatience);
    const auto deadline = link->clock_.now() + patience;
    webSocket->ping();
    for (;;) {
        link->throwIfEnded();
        if (webSocket->signsOfLife().pongs > pongs) co_return;
        if (link->clock_.now() >= deadline) break;
        co_await link->clock_.sleepFor(confirmLook);
    }
    if (answersPings) throw NetworkError(NetworkError::Case::timedOut, describe(link->rest_.endpoint()));
}

Task<> WebApiLink::refresh(Catalogue& catalogue) {
    thread_.check();
    if (!catalogue.loading && catalogue.isEmpty()) {
        // Who asks at the main menu is answered by a catalogue of now, but not many times a second.
        const auto left = catalogue.loadedAt() + Catalogue::emptyStaleAfter - clock_.now();
        if (left > Clock::Duration::zero()) {
            co_await clock_.sleepFor(left);
        }
    }
    throwIfEnded();
    if (!catalogue.loading) {
        if (!catalogue.isStale(clock_.now())) co_return;
        catalogue.loading = std::make_shared<SharedAttempt>(executor_);
        auto tellWhoWaits = [link = shared_from_this(), &catalogue](const std::exception_ptr& failure) {
            if (const auto loading = std::exchange(catalogue.loading, nullptr)) loading->finish(failure);
        };
        const auto loading = catalogue.loading;
        tasks_.spawn(load(shared_from_this(), catalogue), std::move(tellWhoWaits));
        co_await SharedAttempt::wait(loading);
        co_return;
    }
    const auto loading = catalogue.loading;
    co_await SharedAttempt::wait(loading);
}

/// The simulator does not know an id of its own: what it told may be of a run that ended before this link's
/// socket was open, while its catalogue was being read.
Task<> WebApiLink::doubtCatalogues(std::shared_ptr<WebApiLink> link) {
    const auto stale = link->datarefs_.loadedAt() + Catalogue::staleAfter - link->clock_.now();
    if (stale > Clock::Duration::zero()) {
        co_await link->clock_.sleepFor(stale);
    }
    co_await link->refresh(link->datarefs_);
    co_await link->refresh(link->commands_);
    link->isDoubting_ = false;
}

Task<> WebApiLink::load(std::shared_ptr<WebApiLink> link, Catalogue& catalogue) {
    const bool isDatarefs = &catalogue == &link->datarefs_;
    const std::string name = isDatarefs ? "datarefs" : "commands";
    IdsByName ids;
    try {
        ids = co_await link->rest_.catalogue(name);
    } catch (const LinkFailure& failure) {
        // It lets nobody in any more: the next link is told so, and tells who waits.
        if (failure.stage().kind == SimulatorStage::Kind::refusing) link->close();
        throw;
    }
    const bool flightHasGone = isDatarefs && ids.empty() && !catalogue.isEmpty();
    if (flightHasGone) co_return link->close();
    const bool flightHasCome = isDatarefs && !ids.empty() && catalogue.isEmpty();
    catalogue.replace(std::move(ids), link->clock_.now());
    if (const auto loading = std::exchange(catalogue.loading, nullptr)) loading->finish(nullptr);
    if (flightHasCome) link->tellChange();
}

// Messages

Task<> WebApiLink::handleMessage(std::string text) {
    LoopWatch::note("the simulator's message");
    const auto size = text.size();
    auto parse = [text = std::move(text)]() mutable { return parseWebApiMessage(std::move(text)); };
    auto message = co_await workers_.runSized(size, std::move(parse));
    const bool hasSample = message.update.hasAny(positionIds_);
    lastMessageAt_ = clock_.now();
    values_.apply(std::move(message.update));
    valuesEvent_.notifyAll();
    if (hasSample) {
        liveness_.noteValues(clock_.now());
        mismatches_ = 0;
    }
    if (!message.result) co_return;
    const bool isRefused = !message.result->isSuccess && subscriptions_.asksForOne(message.result->reqId);
    auto singly = subscriptions_.noteResult(message.result->reqId, message.result->isSuccess);
    if (hasEnded_) co_return;
    if (isRefused && !std::exchange(isDoubting_, true)) {
        auto goOn = [weak = weak_from_this()](const std::exception_ptr&) {
            if (const auto link = weak.lock()) link->isDoubting_ = false;
        };
        tasks_.spawn(doubtCatalogues(shared_from_this()), std::move(goOn));
    }
    if (singly.empty()) co_return;
    tasks_.spawn(subscribeSingly(shared_from_this(), std::move(singly)), closeOnFailure());
}

Task<> WebApiLink::moreValues(std::shared_ptr<WebApiLink> link, Clock::TimePoint deadline) {
    const auto left = deadline - link->clock_.now();
    if (link->hasEnded_ || left <= Clock::Duration::zero()) co_return;
    co_await waitFor(link->valuesEvent_, link->clock_, left);
}

void WebApiLink::setPositionIds(std::vector<std::int64_t> ids) { positionIds_ = std::move(ids); }

void WebApiLink::refreshAside(Catalogue& catalogue) {
    if (hasEnded_ || catalogue.loading || !catalogue.isStale(clock_.now())) return;
    tasks_.spawn(refreshHolding(shared_from_this(), catalogue), dropFailure);
}

Task<> WebApiLink::refreshHolding(std::shared_ptr<WebApiLink> link, Catalogue& catalogue) {
    co_await link->refresh(catalogue);
}

} // namespace tarnly
