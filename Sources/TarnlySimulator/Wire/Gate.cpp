#include "TarnlySimulator/Wire/Gate.hpp"

#include <algorithm>
#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/TcpAcceptor.hpp"
#include "TarnlySimulator/Wire/FrameFilter.hpp"

namespace tarnly::simulator {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::size_t chunkSize = 64 * 1024;

bool isForControl(std::string_view firstBytes) {
    return firstBytes.starts_with("GET /control ") || firstBytes.starts_with("POST /control ");
}

/// A client and its connection to the server.
struct Carried {
    Carried(tcp::socket givenClient, Clock::TimePoint now)
        : client(std::move(givenClient)), server(client.get_executor()), lastTraffic(now) {}

    tcp::socket client;
    tcp::socket server;
    FrameFilter filter;
    Clock::TimePoint lastTraffic;
    bool isForControl = false;
    bool hasServerEnded = false;
    bool isClosed = false;

    void close() {
        isClosed = true;
        error_code ignored;
        client.close(ignored);
        server.close(ignored);
    }

    /// The client is told by a reset, and loses what is on its way.
    void reset() {
        error_code ignored;
        client.set_option(asio::socket_base::linger(true, 0), ignored);
        close();
    }
};

} // namespace

struct Gate::State {
    State(asio::any_io_executor givenExecutor, Clock& givenClock, const Quirks& givenQuirks,
          std::uint16_t givenServerPort)
        : executor(givenExecutor),
          clock(givenClock),
          quirks(givenQuirks),
          server(asio::ip::address_v4::loopback(), givenServerPort),
          released(givenExecutor),
          tasks(std::move(givenExecutor)) {}

    OnOneThread thread;
    const asio::any_io_executor executor;
    Clock& clock;
    const Quirks& quirks;
    const tcp::endpoint server;
    std::uint16_t port = 0;
    bool isCancelled = false;
    std::optional<TcpAcceptor> acceptor;
    std::vector<std::shared_ptr<Carried>> carried;
    /// Whoever holds bytes back looks again whether they may go on.
    Event released;
    TaskGroup tasks;

    bool holdsBack(const Carried& each) const {
        return quirks.silent && !each.isForControl && !each.isClosed;
    }

    static void open(const std::shared_ptr<State>& state);
    static Task<> serve(std::shared_ptr<State> state, tcp::socket client);
    static Task<> carry(std::shared_ptr<State> state, std::shared_ptr<Carried> each);
    static Task<> carryUp(std::shared_ptr<State> state, std::shared_ptr<Carried> each, std::string bytes);
    static Task<> carryDown(std::shared_ptr<State> state, std::shared_ptr<Carried> each);
    static Task<> waitForRelease(std::shared_ptr<State> state, std::shared_ptr<Carried> each);
    static Task<bool> write(std::shared_ptr<Carried> each, tcp::socket& receiver, std::string bytes);
};

void Gate::State::open(const std::shared_ptr<State>& state) {
    if (state->acceptor || state->isCancelled) return;
    const std::weak_ptr<State> weak = state;
    state->acceptor.emplace(state->executor, state->clock, state->port, Reach::loopbackIPv4,
                            [weak](tcp::socket client) { return serve(weak.lock(), std::move(client)); });
    state->port = state->acceptor->port();
}

/// Hands over at once: the port may be closed, and what its acceptor runs with it, while this goes on.
Task<> Gate::State::serve(std::shared_ptr<State> state, tcp::socket client) {
    if (!state || state->isCancelled) co_return;
    auto each = std::make_shared<Carried>(std::move(client), state->clock.now());
    state->carried.push_back(each);
    auto giveUp = [each](const std::exception_ptr&) { each->close(); };
    state->tasks.spawn(carry(state, each), std::move(giveUp));
}

Task<> Gate::State::carry(std::shared_ptr<State> state, std::shared_ptr<Carried> each) {
    std::string first(chunkSize, '\0');
    const auto space = asio::buffer(first);
    auto [readError, size] = co_await each->client.async_read_some(space, asTuple);
    first.resize(size);
    each->isForControl = isForControl(first);
    error_code error = readError;
    if (!error) {
        co_await waitForRelease(state, each);
        auto [connectError] = co_await each->server.async_connect(state->server, asTuple);
        error = connectError;
    }
    if (!error) {
        error_code ignored;
        each->client.set_option(tcp::no_delay(true), ignored);
        each->server.set_option(tcp::no_delay(true), ignored);
        TaskGroup answers(state->executor);
        auto giveUp = [each](const std::exception_ptr&) { each->close(); };
        answers.spawn(carryDown(state, each), std::move(giveUp));
        co_await carryUp(state, each, std::move(first));
        while (!each->hasServerEnded && !each->isClosed) {
            co_await state->released.wait();
        }
    }
    each->close();
    std::erase(state->carried, each);
}

Task<> Gate::State::carryUp(std::shared_ptr<State> state, std::shared_ptr<Carried> each, std::string bytes) {
    while (!each->isClosed) {
        each->lastTraffic = state->clock.now();
        co_await waitForRelease(state, each);
        if (!each->filter.hasStopped()) {
            const bool isTaken = co_await write(each, each->server, std::move(bytes));
            if (!isTaken) co_return;
        }
        bytes.assign(chunkSize, '\0');
        const auto space = asio::buffer(bytes);
        auto [error, size] = co_await each->client.async_read_some(space, asTuple);
        if (error) break;
        bytes.resize(size);
    }
    co_await waitForRelease(state, each);
    error_code ignored;
    each->server.shutdown(tcp::socket::shutdown_send, ignored);
}

Task<> Gate::State::carryDown(std::shared_ptr<State> state, std::shared_ptr<Carried> each) {
    std::string bytes;
    while (!each->isClosed) {
        bytes.assign(chunkSize, '\0');
        const auto space = asio::buffer(bytes);
        auto [error, size] = co_await each->server.async_read_some(space, asTuple);
        co_await waitForRelease(state, each);
        if (error || each->isClosed) break;
        const auto read = std::string_view(bytes).substr(0, size);
        const auto& quirks = state->quirks;
        auto passed = each->filter.pass(read, {quirks.pingsUnanswered, quirks.midMessage});
        if (passed.empty()) continue;
        each->lastTraffic = state->clock.now();
        const bool isTaken = co_await write(each, each->client, std::move(passed));
        if (!isTaken) break;
    }
    error_code ignored;
    each->client.shutdown(tcp::socket::shutdown_send, ignored);
    each->hasServerEnded = true;
    state->released.notifyAll();
}

Task<> Gate::State::waitForRelease(std::shared_ptr<State> state, std::shared_ptr<Carried> each) {
    while (state->holdsBack(*each)) {
        co_await state->released.wait();
    }
}

/// False when the receiver does not take it.
Task<bool> Gate::State::write(std::shared_ptr<Carried> each, tcp::socket& receiver, std::string bytes) {
    const auto buffer = asio::buffer(bytes);
    auto [error, size] = co_await asio::async_write(receiver, buffer, asTuple);
    if (error) each->close();
    co_return !error;
}

Gate::Gate(asio::any_io_executor executor, Clock& clock, const Quirks& quirks, std::uint16_t port,
           std::uint16_t serverPort)
    : state_(std::make_shared<State>(std::move(executor), clock, quirks, serverPort)) {
    state_->port = port;
    State::open(state_);
}

Gate::~Gate() { cancel(); }

std::uint16_t Gate::port() const { return state_->port; }

std::size_t Gate::connections() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(state_->carried, [](const auto& each) { return !each->isForControl; }));
}

void Gate::close() {
    state_->thread.check();
    state_->acceptor.reset();
    for (const auto& each : state_->carried) {
        if (!each->isForControl) each->reset();
    }
    state_->released.notifyAll();
}

void Gate::open() { State::open(state_); }

void Gate::look() {
    state_->thread.check();
    const auto& quirks = state_->quirks;
    const auto now = state_->clock.now();
    for (const auto& each : state_->carried) {
        const bool isIdle = quirks.idleClose && now - each->lastTraffic >= quirks.idleCloseAfter;
        if (isIdle && !each->isForControl) each->close();
    }
    state_->released.notifyAll();
}

void Gate::cancel() {
    state_->isCancelled = true;
    state_->acceptor.reset();
    for (const auto& each : state_->carried)
        each->close();
    state_->released.notifyAll();
    state_->tasks.cancel();
}

} // namespace tarnly::simulator
