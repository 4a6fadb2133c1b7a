#include "TarnlyCore/Protocol/ProtocolSession.hpp"

#include <algorithm>
#include <exception>
#include <utility>

#include "TarnlyCore/Protocol/ProtocolSessionError.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyPlatform/JsonParser.hpp"
#include "TarnlyPlatform/Text.hpp"

namespace tarnly {
namespace {

/// A longer frame takes more than a moment to decode, and is decoded aside.
constexpr std::size_t longFrame = 64 * 1024;

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
    if (!params) throw ProtocolSessionError::missingParams(complaint);
    return std::move(*params);
}

std::string errorReply(std::optional<std::int64_t> reqId, std::string message) {
    return ProtocolSession::respond("error", reqId, ErrorPayload{std::move(message)});
}

} // namespace

ProtocolSession::ProtocolSession(std::shared_ptr<PairingManager> pairing, std::shared_ptr<SimBackend> backend,
                                 std::shared_ptr<RecordingSession> recording,
                                 std::shared_ptr<LoadedScript> loadedScript, FixResolver fixResolver,
                                 WorkerPool& workers)
    : pairing_(std::move(pairing)),
      backend_(std::move(backend)),
      recording_(std::move(recording)),
      loadedScript_(std::move(loadedScript)),
      fixResolver_(std::move(fixResolver)),
      workers_(workers) {}

bool ProtocolSession::isPaired() const {
    return state_.with([](const State& state) { return state.sessionToken.has_value(); });
}

void ProtocolSession::addSubscriptions(const std::vector<std::string>& names) {
    state_.with([&](State& state) { state.subscribedNames.insert(names.begin(), names.end()); });
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
    const auto request = co_await decodeAside(std::move(text));
    const bool isPairRequest = request && request->head.type == MessageType::pair;
    if (!isPairRequest && !isPaired()) co_return std::nullopt;
    if (!request) co_return errorReply(std::nullopt, "malformed message");
    std::string failure;
    try {
        auto reply = co_await dispatch(*request);
        co_return reply;
    } catch (const std::exception& error) {
        failure = error.what();
    }
    co_return errorReply(request->head.reqId, std::move(failure));
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

Task<std::optional<ProtocolSession::Request>> ProtocolSession::decodeAside(std::string text) {
    if (text.size() <= longFrame) co_return decode(std::move(text));
    auto work = [text = std::move(text)]() mutable { return decode(std::move(text)); };
    auto request = co_await workers_.run(std::move(work));
    co_return request;
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
    auto reply = co_await workers_.run(load);
    co_return reply;
}

Task<std::string> ProtocolSession::startRecording(const Request& request) {
    // Letting go of a long recording takes a while, and so may the disk.
    auto start = [this] { recording_->start(); };
    co_await workers_.run(start);
    co_return respond(request.head.type, request.head.reqId, OkPayload{});
}

Task<std::string> ProtocolSession::stopRecording(const Request& request) {
    auto stop = [this] { recording_->stop(); };
    co_await workers_.run(stop);
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
    const auto params =
        requireParams<DatarefNamesParams>(request.json, "dataref_subscribe_values requires a datarefs array");
    std::vector<std::string> names;
    for (const auto& dataref : params.datarefs) {
        names.push_back(dataref.name);
    }
    addSubscriptions(names);
    auto values = co_await readAll(std::move(names));
    co_return respond(request.head.type, request.head.reqId, std::move(values));
}

Task<std::string> ProtocolSession::setValues(const Request& request) {
    const auto params =
        requireParams<DatarefSetParams>(request.json, "dataref_set_values requires a datarefs array");
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

Task<std::map<std::string, double>> ProtocolSession::readAll(std::vector<std::string> names) {
    std::map<std::string, double> values;
    for (const auto& name : names) {
        const double value = co_await backend_->getDataref(name);
        values.insert_or_assign(name, value);
    }
    co_return values;
}

Task<std::optional<std::string>> ProtocolSession::buildSubscriptionPush() {
    auto names = state_.with([](const State& state) {
        return std::vector<std::string>(state.subscribedNames.begin(), state.subscribedNames.end());
    });
    if (names.empty()) co_return std::nullopt;
    auto values = co_await readAll(std::move(names));
    co_return respond(MessageType::datarefSubscribeValues, std::nullopt, std::move(values));
}

} // namespace tarnly
