#include "TarnlyCore/Protocol/ProtocolSession.hpp"

#include <algorithm>
#include <exception>
#include <utility>

#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

/// What a value takes on the wire, about.
constexpr std::size_t bytesPerValue = 64;

/// The engine of a script as the client sent it. Throws `MappingError`.
TriggerEngine makeEngine(LoadScriptRequest script, const FixResolver& fixResolver) {
    std::vector<ArmedTrigger> armed;
    armed.reserve(script.triggers.size());
    for (auto& trigger : script.triggers) {
        auto condition = ScriptTriggerMapper::toCondition(trigger.conditionKind, trigger.condition);
        armed.push_back({std::move(trigger.id), std::string(), std::move(condition),
                         std::move(trigger.actionKind), std::move(trigger.action)});
    }
    return TriggerEngine(std::move(armed), fixResolver);
}

/// Absent "params", null and anything that is not a `Params` all count as missing.
template <typename Params>
std::optional<Params> findParams(const boost::json::value& json) {
    try {
        return decodeJson<Envelope<Params>>(json).params;
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

template <typename Params>
Params requireParams(const boost::json::value& json, const char* complaint) {
    auto params = findParams<Params>(json);
    if (!params) throw ProtocolSessionError(ProtocolSessionError::Case::missingParams, complaint);
    return std::move(*params);
}

std::string errorReply(std::optional<std::int64_t> reqId, std::string message) {
    return ProtocolSession::respond("error", reqId, ErrorPayload{std::move(message)});
}

} // namespace

ProtocolSession::ProtocolSession(std::shared_ptr<PairingManager> pairing, std::shared_ptr<SimBackend> backend,
                                 std::shared_ptr<FlightRecorder> recording,
                                 std::shared_ptr<LoadedScript> loadedScript, FixResolver fixResolver,
                                 WorkerPool& workers, WorkerPool& scriptWorkers)
    : pairing_(std::move(pairing)),
      backend_(std::move(backend)),
      recording_(std::move(recording)),
      loadedScript_(std::move(loadedScript)),
      fixResolver_(std::move(fixResolver)),
      workers_(workers),
      scriptWorkers_(scriptWorkers) {}

bool ProtocolSession::isPaired() const {
    return state_.with([](const State& state) { return state.sessionToken.has_value(); });
}

void ProtocolSession::addSubscriptions(const std::vector<std::string>& names) {
    state_.with([&](State& state) {
        state.subscribedNames.insert(names.begin(), names.end());
        state.namesToPush =
            std::make_shared<const Names>(state.subscribedNames.begin(), state.subscribedNames.end());
    });
}

const std::vector<ProtocolSession::Entry>& ProtocolSession::handlers() {
    static const std::vector<Entry> table{
        {MessageType::pair, &ProtocolSession::pair},
        {MessageType::simInfo, &ProtocolSession::simInfo},
        {MessageType::listFlights, &ProtocolSession::listFlights},
        {MessageType::loadFlight, &ProtocolSession::loadFlight},
        {MessageType::loadScript, &ProtocolSession::loadScript},
        {MessageType::recordingStart, &ProtocolSession::startRecording},
        {MessageType::recordingStop, &ProtocolSession::stopRecording},
        {MessageType::catchUp, &ProtocolSession::catchUp},
        {MessageType::datarefSubscribeValues, &ProtocolSession::subscribeValues},
        {MessageType::datarefSetValues, &ProtocolSession::setValues},
        {MessageType::runCommand, &ProtocolSession::runCommand},
        {MessageType::moveToPreservingAgl, &ProtocolSession::moveToPreservingAgl},
        {MessageType::applyAttitude, &ProtocolSession::applyAttitude},
    };
    return table;
}

Task<std::optional<std::string>> ProtocolSession::handleMessage(std::string text) {
    const auto size = text.size();
    auto decoding = [text = std::move(text)]() mutable { return decode(std::move(text)); };
    auto request = co_await workers_.runSized(size, std::move(decoding));
    const bool isPairRequest = request && request->head.type == MessageType::pair;
    if (!isPairRequest && !isPaired()) co_return std::nullopt;
    if (!request) co_return errorReply(std::nullopt, "malformed message");
    request->size = size;
    auto reply = co_await answer(*request);
    auto letGo = [request = std::move(request)] {}; // of a long one, that takes a while too
    co_await workers_.runSized(size, std::move(letGo));
    co_return reply;
}

std::optional<ProtocolSession::Request> ProtocolSession::decode(std::string text) {
    try {
        auto json = parseJson(wellFormedUtf8(std::move(text)));
        auto head = decodeJson<TypeOnly>(json);
        return Request{std::move(head), std::move(json)};
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

Task<std::string> ProtocolSession::answer(const Request& request) {
    std::string failure;
    try {
        auto reply = co_await dispatch(request);
        co_return reply;
    } catch (const std::exception& error) {
        failure = error.what();
    }
    co_return errorReply(request.head.reqId, std::move(failure));
}

Task<std::string> ProtocolSession::dispatch(const Request& request) {
    const auto& table = handlers();
    const auto entry = std::ranges::find(table, request.head.type, &Entry::type);
    if (entry == table.end()) {
        co_return errorReply(request.head.reqId, "unknown message type: " + request.head.type);
    }
    auto handling = (this->*entry->handle)(request);
    auto reply = co_await std::move(handling);
    co_return reply;
}

Task<std::string> ProtocolSession::pair(const Request& request) {
    const auto params = findParams<PairRequest>(request.json).value_or(PairRequest{});
    const auto result = pairing_->attempt(params.password);
    if (result.accepted) {
        state_.with([&](State& state) { state.sessionToken = result.sessionToken; });
    }
    PairResponse response{result.accepted, result.sessionToken, result.reason};
    co_return respond(request.head.type, request.head.reqId, std::move(response));
}

Task<std::string> ProtocolSession::simInfo(const Request& request) {
    auto info = co_await backend_->simInfo();
    co_return respond(request.head.type, request.head.reqId, std::move(info));
}

Task<std::string> ProtocolSession::listFlights(const Request& request) {
    FlightsPayload payload;
    payload.flights = co_await backend_->listFlights();
    co_return respond(request.head.type, request.head.reqId, std::move(payload));
}

Task<std::string> ProtocolSession::loadFlight(const Request& request) {
    auto params = requireParams<LoadFlightRequest>(request.json, "load_flight requires a path");
    co_await backend_->loadFlight(std::move(params.path));
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::loadScript(const Request& request) {
    // A script may be long, and the navigation database slow.
    auto load = [this, &request] {
        auto script = requireParams<LoadScriptRequest>(request.json, "load_script requires triggers");
        auto engine = makeEngine(std::move(script), fixResolver_);
        UnresolvedFixesPayload payload{engine.unresolvedFixes()};
        loadedScript_->set(std::move(engine));
        return respond(request.head.type, request.head.reqId, std::move(payload));
    };
    auto reply = co_await scriptWorkers_.run(load);
    co_return reply;
}

Task<std::string> ProtocolSession::startRecording(const Request& request) {
    recording_->start(); // on the thread that records: never between a sample and its triggers
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::stopRecording(const Request& request) {
    recording_->stop();
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::catchUp(const Request& request) {
    const auto params = findParams<CatchUpRequest>(request.json).value_or(CatchUpRequest{});
    // The snapshot is taken on the thread that records, so that no client gets a sample without its triggers
    // and asks for what is after it. Ten hours of flight take a while to write: that is done aside.
    auto encode = [&request, since = params.sinceElapsedSeconds, recorded = recording_->snapshot()] {
        return respond(request.head.type, request.head.reqId, recorded.after(since));
    };
    auto reply = co_await workers_.run(std::move(encode));
    co_return reply;
}

Task<std::string> ProtocolSession::subscribeValues(const Request& request) {
    auto subscribe = [this, &request] {
        auto params = requireParams<DatarefNamesParams>(request.json,
                                                        "dataref_subscribe_values requires a datarefs array");
        Names names;
        for (auto& dataref : params.datarefs) {
            names.push_back(std::move(dataref.name));
        }
        addSubscriptions(names);
        return std::make_shared<const Names>(std::move(names));
    };
    auto names = co_await workers_.runSized(request.size, subscribe);
    auto reply = co_await respondWithValues(request.head.reqId, std::move(names));
    co_return reply;
}

Task<std::string> ProtocolSession::setValues(const Request& request) {
    auto read = [&request] {
        return requireParams<DatarefSetParams>(request.json, "dataref_set_values requires a datarefs array");
    };
    const auto params = co_await workers_.runSized(request.size, read);
    for (const auto& entry : params.datarefs) {
        co_await backend_->setDataref(entry.name, entry.value, entry.index);
    }
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::runCommand(const Request& request) {
    auto params = requireParams<RunCommandRequest>(request.json, "run_command requires a name");
    co_await backend_->runCommand(std::move(params.name));
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::moveToPreservingAgl(const Request& request) {
    const auto params =
        requireParams<MoveToPreservingAglRequest>(request.json, "move_to_preserving_agl requires lat/lon");
    co_await backend_->moveToPreservingAgl(params.lat, params.lon);
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::applyAttitude(const Request& request) {
    const auto params =
        requireParams<ApplyAttitudeRequest>(request.json, "apply_attitude requires pitch/bank/ias/throttle");
    co_await backend_->applyAttitude(params.pitchDeg, params.bankDeg, params.iasKts, params.throttle);
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::respondWithValues(std::optional<std::int64_t> reqId,
                                                     std::shared_ptr<const Names> names) {
    auto read = co_await backend_->getDatarefs(names);
    const auto size = read.size() * bytesPerValue;
    auto encode = [reqId, names = std::move(names), read = std::move(read)] {
        std::map<std::string, double> values;
        for (std::size_t i = 0; i < read.size(); ++i)
            values.insert_or_assign((*names)[i], read[i]);
        return respond(MessageType::datarefSubscribeValues, reqId, std::move(values));
    };
    auto text = co_await workers_.runSized(size, std::move(encode));
    co_return text;
}

Task<std::optional<std::string>> ProtocolSession::buildSubscriptionPush() {
    auto names = state_.with([](const State& state) { return state.namesToPush; });
    if (!names || names->empty()) co_return std::nullopt;
    auto text = co_await respondWithValues(std::nullopt, std::move(names));
    co_return text;
}

} // namespace tarnly
