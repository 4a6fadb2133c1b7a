#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyXPlane/FakeTransport.hpp"
#include "TarnlyXPlane/ReconnectingBackend.hpp"

namespace tarnly::test {

using namespace std::chrono_literals;

/// A backend that finds its way back, to a simulator in memory that comes and goes. Proves at the end that
/// closing it leaves nothing running.
///
/// The simulator knows the datarefs "sim/x" (12) and "sim/a" (13), those of a move, and the command "sim/c"
/// (818).
class ReconnectingFixture : public testing::Test {
  protected:
    /// An operation under way.
    struct Waiting {
        bool isDone = false;
        std::exception_ptr error;
        std::vector<double> values;

        bool hasSucceeded() const { return isDone && !error; }

        /// What clients are told; empty while there is no failure.
        std::string failure() const {
            if (!error) return {};
            try {
                std::rethrow_exception(error);
            } catch (const std::exception& known) {
                return known.what();
            }
        }
    };
    using Pending = std::shared_ptr<Waiting>;

    static inline const std::string refused =
        R"(connectionFailed("127.0.0.1:8086: Connection refused: the simulator is not running: )"
        R"(start X-Plane 12.1.4 or later"))";
    static inline const std::string closed = R"(connectionClosed("127.0.0.1:8086"))";
    static inline const std::string timedOut = R"(timedOut("127.0.0.1:8086"))";

    ReconnectingFixture() {
        transport->datarefs = {{"sim/x", 12},
                               {"sim/a", 13},
                               {"sim/flightmodel/position/latitude", 21},
                               {"sim/flightmodel/position/longitude", 22},
                               {"sim/flightmodel/position/elevation", 23},
                               {"sim/flightmodel/position/y_agl", 24},
                               {"sim/flightmodel/misc/h_ind", 25}};
        transport->commands = {{"sim/c", 818}};
        answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":7})");
        transport->answer = [this](const HttpRequest& request) -> std::optional<HttpResponse> {
            if (isAway)
                throw NetworkError(NetworkError::Case::connectionFailed,
                                   "127.0.0.1:8086: Connection refused");
            if (request.method == "POST") return httpResponse(200, "null");
            const auto found = answers.find(request.target);
            if (found == answers.end()) return std::nullopt;
            return found->second;
        };
        transport->onWebSocket = [this](FakeWebSocket& webSocket) {
            webSocket.answersPings = answersPings;
            return !holdsHandshakes;
        };
        backend->onStageChange([this] { stages.emplace_back(stageName(backend->stage().kind)); });
    }

    void TearDown() override {
        backend->close();
        advance(100ms); // those who look now and then notice
        EXPECT_EQ(clock.sleeping(), 0U);
        io.restart();
        io.run_for(clock.sleeping() > 0 ? 0s : 30s);
        EXPECT_TRUE(io.stopped()) << "something still runs";
    }

    void start() {
        begin = clock.now();
        backend->start();
        VirtualClock::settle(io);
    }

    void advance(Clock::Duration duration) { clock.advance(io, duration); }

    /// Starts, and has the link live for long enough to be no short one.
    void startAndConnect() {
        start();
        advance(10s);
        ASSERT_TRUE(isConnected());
    }

    bool isConnected() const { return transport->webSocket && transport->webSocket->isOpen(); }

    /// The link's end, noticed.
    void endLink() {
        transport->webSocket->cancel();
        VirtualClock::settle(io);
    }

    /// From now on another run of the simulator answers, with other ids.
    void restartSimulator() {
        for (auto& [name, id] : transport->datarefs)
            id += 100;
        for (auto& [name, id] : transport->commands)
            id += 100;
    }

    void deliver(std::int64_t id, const std::string& value) {
        transport->webSocket->deliverValues({{id, value}});
        VirtualClock::settle(io);
    }

    template <typename T>
    Pending beginTask(Task<T> task) {
        auto waiting = std::make_shared<Waiting>();
        if constexpr (std::is_void_v<T>) {
            boost::asio::co_spawn(io, std::move(task), [waiting](std::exception_ptr error) {
                waiting->isDone = true;
                waiting->error = error;
            });
        } else {
            boost::asio::co_spawn(io, std::move(task), [waiting](std::exception_ptr error, T result) {
                waiting->isDone = true;
                waiting->error = error;
                if constexpr (std::is_same_v<T, std::vector<double>>) waiting->values = std::move(result);
            });
        }
        VirtualClock::settle(io);
        return waiting;
    }

    Pending beginRead(std::vector<std::string> names) {
        return beginTask(
            backend->getDatarefs(std::make_shared<const std::vector<std::string>>(std::move(names))));
    }

    Pending beginWrite(const std::string& name) {
        return beginTask(backend->setDataref(name, 1, std::nullopt));
    }

    Pending beginCommand(const std::string& name) { return beginTask(backend->runCommand(name)); }
    Pending beginSample() { return beginTask(backend->getTrackSample()); }
    Pending beginMove() { return beginTask(backend->moveToPreservingAgl(47, 8)); }

    /// How often that has been requested: "GET /api/v2/datarefs".
    int requests(const std::string& line) const {
        return static_cast<int>(std::ranges::count(transport->exchangeLines(), line));
    }

    /// Attempts to connect.
    int attempts() const { return requests("GET /api/v2/datarefs"); }

    /// The ids in what was sent over the present link, by type of message.
    std::vector<std::int64_t> sentIds(const std::string& type) const {
        return idsIn(*transport->webSocket, type);
    }

    static std::vector<std::int64_t> idsIn(const FakeWebSocket& webSocket, const std::string& type) {
        std::vector<std::int64_t> ids;
        for (const auto& message : webSocket.sent) {
            if (message.at("type").as_string() != type) continue;
            for (const auto& entry : message.at("params").at("datarefs").as_array())
                ids.push_back(entry.at("id").as_int64());
        }
        return ids;
    }

    boost::asio::io_context io;
    VirtualClock clock;
    WorkerPool workers{1};
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>(io.get_executor(), clock);
    std::shared_ptr<ReconnectingBackend> backend = std::make_shared<ReconnectingBackend>(
        io.get_executor(), Endpoint{"127.0.0.1", 8086}, transport, clock, workers);

    Clock::TimePoint begin{};
    /// Nobody takes connections.
    bool isAway = false;
    bool answersPings = true;
    /// Handshakes wait for `open` or `refuse`.
    bool holdsHandshakes = false;
    /// By target.
    std::map<std::string, HttpResponse> answers;
    /// Those that were told, in order.
    std::vector<std::string> stages;
};

} // namespace tarnly::test
