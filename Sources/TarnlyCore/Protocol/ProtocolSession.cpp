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
    using Session = ProtocolSession;
    static const std::vector<Entry> table{
        {MessageType::pair, &Session::pair},
        {MessageType::simInfo, &Session::simInfo},
        {MessageType::listFlights, &Session::later<&Session::listFlights>},
        {MessageType::loadFlight, &Session::later<&Session::loadFlight>},
        {MessageType::loadScript, &Session::later<&Session::loadScript>},
        {MessageType::recordingStart, &Session::startRecording},
        {MessageType::recordingStop, &Session::stopRecording},
        {MessageType::catchUp, &Session::later<&Session::catchUp>},
        {MessageType::datarefSubscribeValues, &Session::later<&Session::subscribeValues>},
        {MessageType::datarefSetValues, &Session::later<&Session::setValues>},
        {MessageType::runCommand, &Session::later<&Session::runCommand>},
        {MessageType::moveToPreservingAgl, &Session::later<&Session::moveToPreservingAgl>},
        {MessageType::applyAttitude, &Session::later<&Session::applyAttitude>},
    };
    return table;
}

std::variant<ProtocolSession::Answer, Task<ProtocolSession::Answer>> ProtocolSession::handleMessage(
    std::string text) {
    if (text.size() > WorkerPool::longText) return handleLong(std::move(text));
    const auto request = decode(std::move(text));
    if (!admits(request)) return Answer();
    auto handling = handle(request);
    if (auto* reply = std::get_if<Reply>(&handling)) return Answer(std::move(*reply));
    return finish(request, std::move(std::get<Task<Reply>>(handling)));
}

Task<ProtocolSession::Answer> ProtocolSession::handleLong(std::string text) {
    const auto size = text.size();
    auto decoding = [text = std::move(text)]() mutable { return decode(std::move(text)); };
    auto request = co_await workers_.runSized(size, std::move(decoding));
    if (!admits(request)) co_return std::nullopt;
    auto handling = handle(request);
    Answer answer;
    if (auto* reply = std::get_if<Reply>(&handling)) {
        answer = std::move(*reply);
    } else {
        answer = co_await finish(request, std::move(std::get<Task<Reply>>(handling)));
    }
    auto letGo = [request = std::move(request)] {}; // of a long one, that takes a while too
    co_await workers_.runSized(size, std::move(letGo));
    co_return answer;
}

ProtocolSession::SharedRequest ProtocolSession::decode(std::string text) {
    try {
        const auto size = text.size();
        auto json = parseJson(wellFormedUtf8(std::move(text)));
        auto head = decodeJson<TypeOnly>(json);
        return std::make_shared<const Request>(Request{std::move(head), std::move(json), size});
    } catch (const JsonError&) {
        return nullptr;
    }
}

bool ProtocolSession::admits(const SharedRequest& request) const {
    const bool isPairRequest = request && request->head.type == MessageType::pair;
    return isPairRequest || isPaired();
}

ProtocolSession::Handling ProtocolSession::handle(const SharedRequest& request) {
    if (!request) return Reply{errorReply(std::nullopt, "malformed message"), {}};
    const auto& table = handlers();
    const auto entry = std::ranges::find(table, request->head.type, &Entry::type);
    if (entry == table.end()) {
        return Reply{errorReply(request->head.reqId, "unknown message type: " + request->head.type), {}};
    }
    try {
        return (this->*entry->handle)(request);
    } catch (const std::exception& error) {
        return failed(*request, error.what());
    }
}

Task<ProtocolSession::Answer> ProtocolSession::finish(SharedRequest request, Task<Reply> work) {
    Answer answer;
    try {
        answer = co_await std::move(work);
    } catch (const std::exception& error) {
        answer = failed(*request, error.what());
    }
    co_return answer;
}

Task<std::string> ProtocolSession::makePiece(std::function<std::string()> nextPiece) {
    auto piece = co_await workers_.run(std::move(nextPiece));
    co_return piece;
}

Reply ProtocolSession::failed(const Request& request, const char* why) {
    return {errorReply(request.head.reqId, why), {}};
}

ProtocolSession::Handling ProtocolSession::pair(const SharedRequest& request) {
    const auto params = findParams<PairRequest>(request->json).value_or(PairRequest{});
    const auto result = pairing_->attempt(params.password);
    if (result.accepted) {
        state_.with([&](State& state) { state.sessionToken = result.sessionToken; });
    }
    PairResponse response{result.accepted, result.sessionToken, result.reason};
    return replyTo(*request, std::move(response));
}

ProtocolSession::Handling ProtocolSession::simInfo(const SharedRequest& request) {
    return replyTo(*request, backend_->simInfo());
}

Task<Reply> ProtocolSession::listFlights(SharedRequest request) {
    FlightsPayload payload;
    payload.flights = co_await backend_->listFlights();
    co_return replyTo(*request, std::move(payload));
}

Task<Reply> ProtocolSession::loadFlight(SharedRequest request) {
    auto params = requireParams<LoadFlightRequest>(request->json, "load_flight requires a path");
    co_await backend_->loadFlight(std::move(params.path));
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::loadScript(SharedRequest request) {
    // A script may be long, and the navigation database slow.
    auto load = [this, request] {
        auto script = requireParams<LoadScriptRequest>(request->json, "load_script requires triggers");
        auto engine = makeEngine(std::move(script), fixResolver_);
        UnresolvedFixesPayload payload{engine.unresolvedFixes()};
        loadedScript_->set(std::move(engine));
        return replyTo(*request, std::move(payload));
    };
    auto reply = co_await scriptWorkers_.run(load);
    co_return reply;
}

ProtocolSession::Handling ProtocolSession::startRecording(const SharedRequest& request) {
    recording_->start(); // on the thread that records: never between a sample and its triggers
    return replyTo(*request, OkPayload{});
}

ProtocolSession::Handling ProtocolSession::stopRecording(const SharedRequest& request) {
    recording_->stop();
    return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::catchUp(SharedRequest request) {
    const auto params = findParams<CatchUpRequest>(request->json).value_or(CatchUpRequest{});
    // The snapshot is taken on the thread that records, so that no client gets a sample without its triggers
    // and asks for what is after it. Ten hours of flight take a while to write: that is done aside.
    auto encode = [request, since = params.sinceElapsedSeconds, recorded = recording_->snapshot()] {
        return replyTo(*request, recorded.after(since));
    };
    auto reply = co_await workers_.run(std::move(encode));
    co_return reply;
}

Task<Reply> ProtocolSession::subscribeValues(SharedRequest request) {
    auto subscribe = [this, request] {
        auto params = requireParams<DatarefNamesParams>(request->json,
                                                        "dataref_subscribe_values requires a datarefs array");
        Names names;
        for (auto& dataref : params.datarefs) {
            names.push_back(std::move(dataref.name));
        }
        addSubscriptions(names);
        return std::make_shared<const Names>(std::move(names));
    };
    auto names = co_await workers_.runSized(request->size, subscribe);
    auto text = co_await respondWithValues(request->head.reqId, std::move(names));
    co_return Reply{std::move(text), {}};
}

Task<Reply> ProtocolSession::setValues(SharedRequest request) {
    auto read = [request] {
        return requireParams<DatarefSetParams>(request->json, "dataref_set_values requires a datarefs array");
    };
    const auto params = co_await workers_.runSized(request->size, read);
    for (const auto& entry : params.datarefs) {
        co_await backend_->setDataref(entry.name, entry.value, entry.index);
    }
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::runCommand(SharedRequest request) {
    auto params = requireParams<RunCommandRequest>(request->json, "run_command requires a name");
    co_await backend_->runCommand(std::move(params.name));
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::moveToPreservingAgl(SharedRequest request) {
    const auto params =
        requireParams<MoveToPreservingAglRequest>(request->json, "move_to_preserving_agl requires lat/lon");
    co_await backend_->moveToPreservingAgl(params.lat, params.lon);
    co_return replyTo(*request, OkPayload{});
}

Task<Reply> ProtocolSession::applyAttitude(SharedRequest request) {
    const auto params =
        requireParams<ApplyAttitudeRequest>(request->json, "apply_attitude requires pitch/bank/ias/throttle");
    co_await backend_->applyAttitude(params.pitchDeg, params.bankDeg, params.iasKts, params.throttle);
    co_return replyTo(*request, OkPayload{});
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
