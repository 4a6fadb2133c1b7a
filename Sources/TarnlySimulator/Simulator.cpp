#include "TarnlySimulator/Simulator.hpp"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlySimulator/Api/ApiConversation.hpp"
#include "TarnlySimulator/Api/ApiServer.hpp"
#include "TarnlySimulator/Api/Control.hpp"
#include "TarnlySimulator/Api/HttpApi.hpp"
#include "TarnlySimulator/Api/SituationPort.hpp"
#include "TarnlySimulator/Wire/Gate.hpp"
#include "TarnlySimulator/World/PilotedFlight.hpp"

namespace tarnly::simulator {
namespace {

namespace asio = boost::asio;

constexpr auto tickInterval = std::chrono::milliseconds(100);
/// Behind by more, as after the computer has slept, the flight goes on from where it was.
constexpr auto longestLag = std::chrono::seconds(1);
/// A client that owes more takes no updates until it has read.
constexpr std::size_t largestBacklog = 1024 * 1024;
/// A client that sends a longer message is hung up on.
constexpr std::size_t longestMessage = 128 * 1024;

HttpResponse unavailable() { return {503, "text/plain", ""}; }

struct Client {
    std::shared_ptr<WebSocketConnection> connection;
    ApiConversation conversation;
    Clock::TimePoint since;
};

} // namespace

struct Simulator::State : std::enable_shared_from_this<State> {
    State(asio::any_io_executor givenExecutor, Clock& givenClock, SimulatorOptions givenOptions,
          std::unique_ptr<FlightSource> flight)
        : clock(givenClock),
          options(std::move(givenOptions)),
          world(options, std::move(flight)),
          tasks(givenExecutor),
          returning(std::move(givenExecutor)) {}

    OnOneThread thread;
    Clock& clock;
    SimulatorOptions options;
    World world;
    HttpApi http{world};
    std::vector<std::shared_ptr<Client>> clients;
    Orders orders{world, {[this] { dropConnections(); }, [this](const Restart& how) { restart(how); }}};
    Control control{world, orders};
    std::optional<ApiServer> server;
    std::optional<Gate> gate;
    std::optional<SituationPort> situations;
    bool isAway = false;
    bool isStopped = false;
    TaskGroup tasks;
    /// The end of being away.
    TaskGroup returning;

    void dropConnections() {
        thread.check();
        for (const auto& client : clients)
            client->connection->cancel();
    }

    void forget(const std::shared_ptr<Client>& client) {
        client->connection->cancel();
        std::erase(clients, client);
    }

    void restart(const Restart& how);

    void load(const std::string& path) {
        if (isAway) return;
        const bool isLoaded = world.loadSituation(path);
        const auto& tell = isLoaded ? options.onSituation : options.onIgnored;
        if (tell) tell((isLoaded ? "Situation loaded: " : "Situation ignored: ") + path);
    }

    void ignore(const std::string& reason) const {
        if (options.onIgnored) options.onIgnored("Datagram ignored: " + reason);
    }

    void tick();

    static Task<std::optional<HttpResponse>> answer(std::weak_ptr<State> weak, HttpRequest request,
                                                    bool isUpgrade);
    static void accept(const std::weak_ptr<State>& weak, std::shared_ptr<WebSocketConnection> connection);
    static Task<> serve(std::shared_ptr<State> state, std::shared_ptr<Client> client);
    static Task<> keepTime(std::shared_ptr<State> state);
    static Task<> comeBack(std::weak_ptr<State> weak, Clock& clock, Clock::Duration away);
};

/// A simulator whose time stands still, or that nobody can reach any more, is of no use.
void endProgram(const std::exception_ptr& failure) { std::rethrow_exception(failure); }

Task<std::optional<HttpResponse>> Simulator::State::answer(std::weak_ptr<State> weak, HttpRequest request,
                                                           bool isUpgrade) {
    const auto state = weak.lock();
    if (!state || state->isStopped) co_return unavailable();
    if (Control::isMeant(request)) co_return state->control.answer(request);
    if (state->world.quirks.slow) {
        const Clock::Duration delay = state->world.quirks.slowBy;
        co_await state->clock.sleepFor(delay);
    }
    if (isUpgrade && state->world.quirks.handshakeLate) {
        const Clock::Duration delay = state->world.quirks.handshakeLateBy;
        co_await state->clock.sleepFor(delay);
    }
    co_return state->http.answer(request, isUpgrade);
}

void Simulator::State::accept(const std::weak_ptr<State>& weak,
                              std::shared_ptr<WebSocketConnection> connection) {
    const auto state = weak.lock();
    if (!state || state->isStopped) return connection->cancel();
    connection->setMessageLimit(longestMessage);
    auto client =
        std::make_shared<Client>(std::move(connection), ApiConversation(state->world), state->clock.now());
    state->clients.push_back(client);
    // A failing connection ends its own talk and nothing else.
    auto forget = [state, client](const std::exception_ptr&) { state->forget(client); };
    state->tasks.spawn(serve(state, client), std::move(forget));
}

Task<> Simulator::State::serve(std::shared_ptr<State> state, std::shared_ptr<Client> client) {
    while (true) {
        auto message = co_await client->connection->receive();
        if (!message) break;
        const auto results = client->conversation.answer(message->content);
        if (state->world.quirks.slow) {
            const Clock::Duration delay = state->world.quirks.slowBy;
            co_await state->clock.sleepFor(delay);
        }
        for (const auto& result : results)
            client->connection->send(result, WebSocketConnection::Kind::awaited);
        co_await client->connection->drained();
    }
    state->forget(client);
}

Task<> Simulator::State::keepTime(std::shared_ptr<State> state) {
    auto due = state->clock.now();
    while (!state->isStopped) {
        due = std::max(due + tickInterval, state->clock.now() - longestLag);
        const auto rest = due - state->clock.now();
        co_await state->clock.sleepFor(rest);
        if (!state->isStopped) state->tick();
    }
}

void Simulator::State::restart(const Restart& how) {
    thread.check();
    gate->close();
    dropConnections();
    if (how.isSwapped) {
        world.swapGearCommands();
    } else {
        world.drawIds(static_cast<std::uint64_t>(world.datarefs().entries().front().id));
    }
    if (how.isFresh) world.beginAnew();
    isAway = true;
    returning.cancel();
    if (how.away.count() > 0) {
        returning.spawn(comeBack(weak_from_this(), clock, how.away), endProgram);
    } else {
        isAway = false;
        gate->open();
    }
}

Task<> Simulator::State::comeBack(std::weak_ptr<State> weak, Clock& clock, Clock::Duration away) {
    co_await clock.sleepFor(away);
    const auto state = weak.lock();
    if (!state || state->isStopped) co_return;
    state->isAway = false;
    state->gate->open();
}

void Simulator::State::tick() {
    thread.check();
    gate->look();
    if (world.quirks.silent) return;
    world.advance(std::chrono::duration<double>(tickInterval).count());
    for (const auto& client : clients) {
        const bool isOld = options.dropAfter && clock.now() - client->since >= *options.dropAfter;
        if (isOld) client->connection->cancel();
        if (isOld || client->connection->backlog() > largestBacklog) continue;
        auto update = client->conversation.update();
        if (!update.empty())
            client->connection->send(std::move(update), WebSocketConnection::Kind::unsolicited);
    }
}

Simulator::Simulator(asio::any_io_executor executor, Clock& clock, SimulatorOptions options)
    : Simulator(std::move(executor), clock, options,
                std::make_unique<PilotedFlight>(options.seed, options.start, options)) {}

Simulator::Simulator(asio::any_io_executor executor, Clock& clock, SimulatorOptions options,
                     std::unique_ptr<FlightSource> flight)
    : state_(std::make_shared<State>(executor, clock, std::move(options), std::move(flight))) {
    const std::weak_ptr<State> weak = state_;
    state_->situations.emplace(
        executor, state_->options.udpPort,
        [state = state_.get()](const std::string& path) { state->load(path); },
        [state = state_.get()](const std::string& reason) { state->ignore(reason); });
    constexpr std::uint16_t any = 0; // clients see the gate's
    state_->server.emplace(
        executor, clock, any,
        [weak](HttpRequest request, bool isUpgrade) {
            return State::answer(weak, std::move(request), isUpgrade);
        },
        [weak](std::shared_ptr<WebSocketConnection> connection) {
            State::accept(weak, std::move(connection));
        });
    state_->gate.emplace(executor, clock, state_->world.quirks, state_->options.port, state_->server->port());
    state_->tasks.spawn(State::keepTime(state_), endProgram);
}

Simulator::~Simulator() { stop(); }

std::uint16_t Simulator::port() const { return state_->gate->port(); }
std::uint16_t Simulator::udpPort() const { return state_->situations->port(); }
World& Simulator::world() { return state_->world; }
std::size_t Simulator::connections() const { return state_->clients.size(); }
void Simulator::dropConnections() { state_->dropConnections(); }
void Simulator::restart(const Restart& how) { state_->restart(how); }
void Simulator::obey(std::string_view order) { state_->orders.obey(order); }

void Simulator::stop() {
    state_->isStopped = true;
    state_->gate->cancel();
    state_->server->cancel();
    state_->situations->cancel();
    state_->dropConnections();
    state_->clients.clear();
    state_->returning.cancel();
    state_->tasks.cancel();
}

} // namespace tarnly::simulator
