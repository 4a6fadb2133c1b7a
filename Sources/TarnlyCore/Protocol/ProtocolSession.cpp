#include "TarnlyCore/Protocol/ProtocolSession.hpp"

#include <algorithm>
#include <chrono>
#include <exception>
#include <functional>
#include <iterator>
#include <map>
#include <new>
#include <span>
#include <utility>

#include "TarnlyCore/Protocol/CatchUpReply.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyPlatform/Base/LoopWatch.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

/// What a value takes on the wire, about.
constexpr std::size_t bytesPerValue = 64;

/// How long a client waits for its recording's file: whoever looks for it then finds it, and a disk that
/// hangs does not keep the recording from beginning.
constexpr auto fileLimit = std::chrono::milliseconds(250);

/// How long at its end, for a disk that hangs: as long as the program's own end.
constexpr auto stopLimit = std::chrono::seconds(10);

template <typename Params>
Params requireParams(Request& request, const char* complaint) {
    auto params = request.take<Params>();
    if (!params) throw ProtocolSessionError(ProtocolSessionError::Case::missingParams, complaint);
    return std::move(*params);
}

/// Nobody waits for the answer any more, and the connection is to end.
struct Dismissed : std::exception {};

ProtocolLimitError limitExceeded(const std::string& limit) {
    return ProtocolLimitError(ProtocolLimitError::Case::limitExceeded, limit);
}

/// Of a dataref or a command.
void requireName(const std::string& name) {
    using ProtocolLimits::nameSize;
    if (name.size() > nameSize) {
        throw limitExceeded("a name may have " + std::to_string(nameSize) + " bytes at most");
    }
}

/// The bytes of names, about; many of them count as much as long ones.
std::size_t sizeOf(const std::vector<std::string>& names) {
    constexpr std::size_t many = WorkerPool::longText / bytesPerValue;
    std::size_t size = names.size() * bytesPerValue;
    for (const auto& name : std::span(names).first(std::min(names.size(), many)))
        size += name.size();
    return size;
}

/// Values by name.
struct ValuesPayload {
    const std::vector<std::string>* names;
    const std::vector<double>* values;
};

/// In the order of the names; of one that comes twice, the last value.
void writeJson(JsonWriter& writer, const ValuesPayload& payload) {
    const auto& names = *payload.names;
    const bool isInOrder = std::ranges::adjacent_find(names, std::greater_equal<>()) == names.end();
    std::map<std::string_view, double> byName;
    writer.beginObject();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (isInOrder) {
            writeField(writer, names[i], (*payload.values)[i]);
        } else {
            byName.insert_or_assign(names[i], (*payload.values)[i]);
        }
    }
    for (const auto& [name, value] : byName)
        writeField(writer, name, value);
    writer.endObject();
}

std::string errorReply(std::optional<std::int64_t> reqId, std::string message) {
    return ProtocolSession::respond("error", reqId, ErrorPayload{std::move(message)});
}

} // namespace

ProtocolSession::ProtocolSession(Services services, const PeerNetwork& network)
    : services_(std::move(services)), network_(network) {}

ProtocolSession::~ProtocolSession() {
    services_.pairing->revoke(token_);
    const auto names = namesToPush_.copy();
    if (names) services_.names->giveBack(names->size());
    if (hadLongRequest_ && services_.onMuchFreed) services_.onMuchFreed();
}

void ProtocolSession::end() {
    peer_->hasEnded = true;
    services_.guard->wake();
}

void ProtocolSession::hangUp() {
    peer_->hasHungUp = true;
    services_.guard->wake();
}

std::size_t ProtocolSession::subscriptionCount() const {
    const auto names = namesToPush_.copy();
    return names ? names->size() : 0;
}

void ProtocolSession::addSubscriptions(Names names) {
    std::ranges::sort(names);
    bool isInForce = false;
    while (!isInForce) {
        const auto before = namesToPush_.copy();
        Names all;
        if (before) all.reserve(before->size() + names.size());
        std::ranges::set_union(before ? *before : Names(), names, std::back_inserter(all));
        const auto repeated = std::ranges::unique(all);
        all.erase(repeated.begin(), repeated.end());
        const auto added = all.size() - (before ? before->size() : 0);
        const auto count = all.size();
        const auto size = sizeOf(all);
        auto next = services_.workers.share(std::move(all), size);
        takeNames(count, added);
        // Nobody waits for the lock while all that is done; another addition may have come first.
        isInForce = namesToPush_.with([&](SharedNames& present) {
            if (present != before) return false;
            present.swap(next);
            return true;
        });
        if (!isInForce) services_.names->giveBack(added);
    }
}

void ProtocolSession::takeNames(std::size_t ofSession, std::size_t added) {
    using namespace ProtocolLimits;
    if (ofSession > namesASession) {
        throw limitExceeded("a connection may subscribe to " + std::to_string(namesASession) +
                            " datarefs at most");
    }
    if (!services_.names->take(added)) {
        throw limitExceeded("all connections together may subscribe to " + std::to_string(namesInAll) +
                            " datarefs at most");
    }
}

const std::vector<ProtocolSession::Entry>& ProtocolSession::handlers() {
    using Session = ProtocolSession;
    static const std::vector<Entry> table{
        {MessageType::pair, readParams<PairRequest>, &Session::pair},
        {MessageType::simInfo, nullptr, &Session::simInfo},
        {MessageType::listFlights, nullptr, &Session::later<&Session::listFlights>},
        {MessageType::loadFlight, readParams<LoadFlightRequest>, &Session::later<&Session::loadFlight>},
        {MessageType::loadScript, readParams<LoadScriptRequest>, &Session::later<&Session::loadScript>},
        {MessageType::recordingStart, nullptr, &Session::later<&Session::startRecording>},
        {MessageType::recordingStop, nullptr, &Session::later<&Session::stopRecording>},
        {MessageType::catchUp, readParams<CatchUpRequest>, &Session::later<&Session::catchUp>},
        {MessageType::datarefSubscribeValues, readParams<DatarefNamesParams>,
         &Session::later<&Session::subscribeValues>},
        {MessageType::datarefSetValues, readParams<DatarefSetParams>, &Session::later<&Session::setValues>},
        {MessageType::runCommand, readParams<RunCommandRequest>, &Session::later<&Session::runCommand>},
        {MessageType::moveToPreservingAgl, readParams<MoveToPreservingAglRequest>,
         &Session::later<&Session::moveToPreservingAgl>},
        {MessageType::applyAttitude, readParams<ApplyAttitudeRequest>,
         &Session::later<&Session::applyAttitude>},
    };
    return table;
}

std::variant<ProtocolSession::Answer, Task<ProtocolSession::Answer>> ProtocolSession::handleMessage(
    std::string text) {
    LoopWatch::note("a client's message");
    if (text.size() > WorkerPool::longText) return handleLong(std::move(text));
    const auto request = decode(std::move(text), isPaired());
    if (!admits(request)) return Answer();
    auto handling = handle(request);
    if (auto* reply = std::get_if<Reply>(&handling)) return Answer(std::move(*reply));
    return finish(request, std::move(std::get<Task<Reply>>(handling)));
}

Task<ProtocolSession::Answer> ProtocolSession::handleLong(std::string text) {
    hadLongRequest_ = true;
    const auto size = text.size();
    auto decoding = [text = std::move(text), paired = isPaired()]() mutable {
        return decode(std::move(text), paired);
    };
    auto request = co_await services_.workers.runSized(size, std::move(decoding));
    LoopWatch::note("a client's long message");
    if (services_.onMuchFreed) services_.onMuchFreed();
    if (!admits(request)) co_return std::nullopt;
    auto handling = handle(request);
    Answer answer;
    if (auto* reply = std::get_if<Reply>(&handling)) {
        answer = std::move(*reply);
    } else {
        answer = co_await finish(request, std::move(std::get<Task<Reply>>(handling)));
    }
    auto letGo = [request = std::move(request)] {}; // of a long one, that takes a while too
    co_await services_.workers.runSized(size, std::move(letGo));
    if (services_.onMuchFreed) services_.onMuchFreed();
    co_return answer;
}

ProtocolSession::SharedRequest ProtocolSession::decode(std::string text, bool isPaired) {
    try {
        auto request = std::make_shared<Decoded>();
        request->size = text.size();
        text = wellFormedUtf8(std::move(text));
        auto& head = request->head;
        head = decodeJsonText<TypeOnly>(text);
        const bool goesOn = isPaired || head.type == MessageType::pair;
        if (!goesOn) return request;
        const auto& table = handlers();
        const auto entry = std::ranges::find(table, head.type, &Entry::type);
        if (entry == table.end()) {
            request->refusal = errorReply(head.reqId, "unknown message type: " + head.type);
        } else {
            request->handle = entry->handle;
            if (entry->read != nullptr) request->params = entry->read(text);
        }
        return request;
    } catch (const JsonError&) {
        return nullptr;
    }
}

bool ProtocolSession::admits(const SharedRequest& request) const {
    const bool isPairRequest = request && request->head.type == MessageType::pair;
    return isPairRequest ? services_.guard->hasRoom(network_) : isPaired();
}

ProtocolSession::Handling ProtocolSession::handle(const SharedRequest& request) {
    if (!request) return Reply{errorReply(std::nullopt, "malformed message"), {}};
    if (request->handle == nullptr) return Reply{std::move(request->refusal), {}};
    try {
        return (this->*request->handle)(request);
    } catch (const std::exception& error) {
        return Reply{errorReply(request->head.reqId, error.what()), {}};
    }
}

Task<ProtocolSession::Answer> ProtocolSession::finish(SharedRequest request, Task<Reply> work) {
    try {
        auto reply = co_await std::move(work);
        co_return reply;
    } catch (const Dismissed&) {
        co_return std::nullopt;
    } catch (const std::exception& error) {
        co_return Reply{errorReply(request->head.reqId, error.what()), {}};
    }
}

Task<std::string> ProtocolSession::makePiece(std::function<std::string()> nextPiece) {
    auto piece = co_await services_.workers.run(std::move(nextPiece));
    co_return piece;
}

ProtocolSession::Handling ProtocolSession::pair(const SharedRequest& request) {
    auto password = request->take<PairRequest>().value_or(PairRequest{}).password;
    if (services_.guard->isPrompt(network_)) return finishPairing(*request, password);
    // Strangers who wait take no more memory than a password does.
    if (password && password->size() > PairingManager::longestPassword) password.reset();
    return pairInTurn(request, std::move(password));
}

Task<Reply> ProtocolSession::pairInTurn(SharedRequest request, std::optional<std::string> password) {
    auto isAbandoned = [peer = peer_] { return peer->hasEnded || peer->hasHungUp; };
    co_await services_.guard->waitForTurn(network_, isAbandoned);
    if (isAbandoned()) throw Dismissed();
    co_return finishPairing(*request, password);
}

Reply ProtocolSession::finishPairing(const Request& request, const std::optional<std::string>& password) {
    const auto result = services_.pairing->attempt(password);
    services_.guard->note(network_, result.accepted);
    if (result.accepted) {
        services_.pairing->revoke(std::exchange(token_, *result.sessionToken));
        isPaired_ = true;
    }
    PairResponse response{result.accepted, result.sessionToken, result.reason};
    return replyTo(request, std::move(response));
}

ProtocolSession::Handling ProtocolSession::simInfo(const SharedRequest& request) {
    return replyTo(*request, services_.backend->simInfo());
}

Task<Reply> ProtocolSession::listFlights(SharedRequest request) {
    FlightsPayload payload;
    payload.flights = co_await services_.backend->listFlights();
    co_return replyTo(*request, std::move(payload));
}

Task<Reply> ProtocolSession::loadFlight(SharedRequest request) {
    auto params = requireParams<LoadFlightRequest>(*request, "load_flight requires a path");
    cutPath(params.path);
    co_await services_.backend->loadFlight(std::move(params.path));
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::loadScript(SharedRequest request) {
    // A script may be long, and the navigation database slow. Meanwhile the client may go, and another one's
    // later script be ready.
    auto load = [request, place = services_.loadedScript->announce(), loadedScript = services_.loadedScript,
                 makeFixResolver = services_.makeFixResolver, peer = peer_] {
        auto script = requireParams<LoadScriptRequest>(*request, "load_script requires triggers");
        bool isGivenUp = false;
        const auto resolver = makeFixResolver([&isGivenUp, &peer] {
            isGivenUp = isGivenUp || peer->hasEnded || peer->hasHungUp;
            return !isGivenUp;
        });
        auto engine = ScriptTriggerMapper::toEngine(std::move(script), resolver);
        if (isGivenUp) throw NetworkError(NetworkError::Case::connectionClosed, "load_script");
        UnresolvedFixesPayload payload{engine.unresolvedFixes()};
        if (!peer->hasEnded) loadedScript->set(std::move(engine), place);
        return replyTo(*request, std::move(payload));
    };
    auto reply = co_await services_.scriptWorkers.run(std::move(load));
    co_return reply;
}

Task<Reply> ProtocolSession::startRecording(SharedRequest request) {
    services_.recording->start(); // on the thread that records: never between a sample and its triggers
    co_await waitUntilWritten(fileLimit);
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::stopRecording(SharedRequest request) {
    services_.recording->stop();
    co_await waitUntilWritten(stopLimit);
    co_return replyTo(*request, OkPayload{});
}

Task<> ProtocolSession::waitUntilWritten(Clock::Duration limit) {
    try {
        co_await services_.recording->written(limit);
    } catch (const std::bad_alloc&) {
        // The recording has begun, or ended, all the same: who is told otherwise asks for it again.
    }
}

Task<Reply> ProtocolSession::catchUp(SharedRequest request) {
    const auto params = request->take<CatchUpRequest>().value_or(CatchUpRequest{});
    // The snapshot is taken on the thread that records, so that no client gets a sample without its triggers
    // and asks for what is after it. Ten hours of flight take a while to write: that is done aside.
    auto reply = std::make_shared<CatchUpReply>(request->head, services_.recording->snapshot(),
                                                params.sinceElapsedSeconds);
    auto encode = [reply] {
        auto text = reply->nextPiece();
        return reply->isWhole() ? Reply{std::move(text), {}}
                                : Reply{std::move(text), [reply] { return reply->nextPiece(); }};
    };
    auto first = co_await services_.workers.run(std::move(encode));
    co_return first;
}

Task<Reply> ProtocolSession::subscribeValues(SharedRequest request) {
    auto subscribe = [this, request] {
        auto params =
            requireParams<DatarefNamesParams>(*request, "dataref_subscribe_values requires a datarefs array");
        Names names;
        names.reserve(params.datarefs.size());
        for (auto& dataref : params.datarefs) {
            requireName(dataref.name);
            names.push_back(std::move(dataref.name));
        }
        addSubscriptions(names);
        const auto size = sizeOf(names);
        return services_.workers.share(std::move(names), size);
    };
    auto names = co_await services_.workers.runSized(request->size, subscribe);
    auto text = co_await respondWithValues(request->head.reqId, std::move(names));
    co_return Reply{std::move(text), {}};
}

Task<Reply> ProtocolSession::setValues(SharedRequest request) {
    auto read = [this, request] {
        auto params =
            requireParams<DatarefSetParams>(*request, "dataref_set_values requires a datarefs array");
        for (const auto& entry : params.datarefs)
            requireName(entry.name);
        return services_.workers.share(std::move(params), request->size);
    };
    const auto params = co_await services_.workers.runSized(request->size, read);
    for (const auto& entry : params->datarefs) {
        co_await services_.backend->setDataref(entry.name, entry.value, entry.index);
    }
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::runCommand(SharedRequest request) {
    auto params = requireParams<RunCommandRequest>(*request, "run_command requires a name");
    requireName(params.name);
    co_await services_.backend->runCommand(std::move(params.name));
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::moveToPreservingAgl(SharedRequest request) {
    const auto params =
        requireParams<MoveToPreservingAglRequest>(*request, "move_to_preserving_agl requires lat/lon");
    co_await services_.backend->moveToPreservingAgl(params.lat, params.lon);
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::applyAttitude(SharedRequest request) {
    const auto params =
        requireParams<ApplyAttitudeRequest>(*request, "apply_attitude requires pitch/bank/ias/throttle");
    co_await services_.backend->applyAttitude(params.pitchDeg, params.bankDeg, params.iasKts,
                                              params.throttle);
    co_return replyTo(*request, OkPayload{});
}

Task<std::string> ProtocolSession::respondWithValues(std::optional<std::int64_t> reqId, SharedNames names) {
    auto read = co_await services_.backend->getDatarefs(names);
    LoopWatch::note("values that have been read");
    const auto size = sizeOf(*names);
    auto encode = [reqId, names = std::move(names), read = std::move(read)] {
        return respond(MessageType::datarefSubscribeValues, reqId, ValuesPayload{names.get(), &read});
    };
    auto text = co_await services_.workers.runSized(size, std::move(encode));
    co_return text;
}

ProtocolSession::Push ProtocolSession::buildSubscriptionPush() {
    LoopWatch::note("a push");
    auto names = namesToPush_.copy();
    if (!names || names->empty()) return std::nullopt;
    const auto present = services_.backend->presentDatarefs(*names);
    if (!present || sizeOf(*names) > WorkerPool::longText) return buildPushLater(std::move(names));
    return respond(MessageType::datarefSubscribeValues, std::nullopt, ValuesPayload{names.get(), &*present});
}

Task<std::optional<std::string>> ProtocolSession::buildPushLater(SharedNames names) {
    auto text = co_await respondWithValues(std::nullopt, std::move(names));
    co_return text;
}

} // namespace tarnly
