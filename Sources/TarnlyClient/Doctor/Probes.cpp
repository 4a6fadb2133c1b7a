#include "TarnlyClient/Doctor/Probes.hpp"

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <exception>
#include <future>
#include <utility>

#include "TarnlyClient/Companion/CompanionSession.hpp"
#include "TarnlyPlatform/Base/Aside.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly::client {

/// Has linkage, as it is a member of a record.
struct SimulatorName {
    std::string version;

    static constexpr auto fields() { return std::tuple(field("version", &SimulatorName::version)); }
};

namespace {

using Kind = SimulatorStage::Kind;
using std::chrono::milliseconds;

/// What a thread may take to bring what it has.
constexpr milliseconds moment{100};
constexpr auto probedValue = "sim/flightmodel/position/latitude";

struct Capabilities {
    std::optional<SimulatorName> simulator;

    static constexpr auto fields() { return std::tuple(field("x-plane", &Capabilities::simulator)); }
};

struct Count {
    std::int64_t data = 0;

    static constexpr auto fields() { return std::tuple(field("data", &Count::data)); }
};

struct ApiRefusal {
    std::optional<std::string> message;

    static constexpr auto fields() { return std::tuple(field("error_message", &ApiRefusal::message)); }
};

template <typename T>
std::optional<T> decoded(const std::string& text) {
    try {
        return decodeJson<T>(parseJson(text));
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

/// The answer, or why there was none.
struct Fetched {
    std::optional<HttpResponse> response;
    std::optional<NetworkError> failure;
};

Task<> fetchInto(Fetched& fetched, Clock& clock, Endpoint endpoint, std::string target, milliseconds limit) {
    HttpRequest request;
    request.target = std::move(target);
    request.headers.emplace_back("Accept", "*/*");
    try {
        auto response = co_await fetchHttp(clock, std::move(endpoint), std::move(request), limit);
        fetched.response = std::move(response);
    } catch (const NetworkError& error) {
        fetched.failure = error;
    }
}

Fetched fetch(const Endpoint& endpoint, const std::string& target, milliseconds limit) {
    SystemClock clock;
    boost::asio::io_context io(1);
    Fetched fetched;
    // Whatever else may come of it, for lack of memory say: that place has not answered.
    boost::asio::co_spawn(io, fetchInto(fetched, clock, endpoint, target, limit),
                          [](const std::exception_ptr&) {});
    io.run();
    return fetched;
}

/// All of them side by side, each on a thread of its own: the network has its limit, the look for the address
/// of a name has none.
std::vector<Fetched> fetchAll(const std::vector<std::pair<Endpoint, std::string>>& wanted,
                              milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit + moment;
    std::vector<std::future<Fetched>> underWay;
    underWay.reserve(wanted.size());
    for (const auto& [endpoint, target] : wanted)
        underWay.push_back(startAside(
            [endpoint = endpoint, target = target, limit] { return fetch(endpoint, target, limit); }));
    std::vector<Fetched> all;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
        auto fetched = answerOf(underWay[i], std::max(left, milliseconds(0)));
        const NetworkError late(NetworkError::Case::timedOut, describe(wanted[i].first));
        all.push_back(fetched ? *std::move(fetched) : Fetched{{}, late});
    }
    return all;
}

std::string reasonOf(const std::optional<NetworkError>& failure) {
    if (!failure) return "no answer";
    if (failure->which() == NetworkError::Case::timedOut) return "nothing came back in time";
    const auto& text = failure->payload();
    const auto colon = text.rfind(": ");
    return colon == std::string::npos ? text : text.substr(colon + 2);
}

SimulatorStage stageOf(Kind kind, std::string detail = {}) {
    SimulatorStage stage;
    stage.kind = kind;
    stage.detail = Phrase::verbatim(std::move(detail));
    return stage;
}

SimulatorStage stageOf(const Fetched& count, const std::string& version) {
    if (!count.response) {
        const bool isLate = count.failure && count.failure->which() == NetworkError::Case::timedOut;
        if (isLate) return stageOf(Kind::silent);
        const bool isAnswer = count.failure && count.failure->which() == NetworkError::Case::invalidResponse;
        return stageOf(Kind::notRunning, isAnswer ? "something else answers on its port" : "");
    }
    if (count.response->status == httpStatus::forbidden) {
        const auto refusal = decoded<ApiRefusal>(count.response->body).value_or(ApiRefusal());
        return stageOf(Kind::refusing, refusal.message.value_or(""));
    }
    const auto datarefs = decoded<Count>(count.response->body);
    if (count.response->status == httpStatus::ok && datarefs)
        return stageOf(datarefs->data > 0 ? Kind::flightLoaded : Kind::mainMenu);
    if (count.response->status == httpStatus::notFound) return stageOf(Kind::tooOld, version);
    return stageOf(Kind::notRunning, "something else answers on its port");
}

Task<> askForValue(CompanionSession& session, ValueProbe& probe) {
    co_await session.pair();
    probe.isPaired = true;
    auto params = namesParams({probedValue});
    auto data = co_await session.request(MessageType::datarefSubscribeValues, std::move(params));
    probe.hasValue = decodeAnswer<Values>(data).contains(probedValue);
    if (!probe.hasValue) probe.failure = "the position is not among them";
}

} // namespace

std::vector<PageProbe> probePages(const std::vector<Endpoint>& places, milliseconds limit) {
    std::vector<std::pair<Endpoint, std::string>> wanted;
    wanted.reserve(places.size());
    for (const auto& place : places)
        wanted.emplace_back(place, "/");
    const auto fetched = fetchAll(wanted, limit);
    std::vector<PageProbe> probes;
    for (std::size_t i = 0; i < places.size(); ++i) {
        PageProbe probe;
        probe.place = describe(places[i]);
        if (const auto& response = fetched[i].response) {
            probe.status = response->status;
            probe.isOurs =
                response->status == httpStatus::ok && response->body.find("Tarnly") != std::string::npos;
        } else {
            probe.failure = reasonOf(fetched[i].failure);
        }
        probes.push_back(std::move(probe));
    }
    return probes;
}

SimulatorProbe probeSimulator(const Endpoint& simulator, milliseconds limit) {
    const auto fetched =
        fetchAll({{simulator, "/api/v2/datarefs/count"}, {simulator, "/api/capabilities"}}, limit);
    SimulatorProbe probe;
    probe.place = describe(simulator);
    if (fetched[1].response) {
        const auto capabilities = decoded<Capabilities>(fetched[1].response->body);
        if (capabilities && capabilities->simulator) probe.version = capabilities->simulator->version;
    }
    probe.stage = stageOf(fetched[0], probe.version);
    return probe;
}

ValueProbe probeValues(const Endpoint& companion, const std::optional<std::string>& password,
                       milliseconds limit) {
    const auto probed = aside(2 * limit, [companion, password, limit] {
        ValueProbe probe;
        try {
            holdSession(companion, {password, limit},
                        [&](CompanionSession& session) { return askForValue(session, probe); });
        } catch (const std::exception& error) {
            probe.failure = error.what();
        }
        return probe;
    });
    return probed.value_or(ValueProbe{false, false, "the companion did not answer in time"});
}

} // namespace tarnly::client
