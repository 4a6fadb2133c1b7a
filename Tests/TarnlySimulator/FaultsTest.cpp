#include <gtest/gtest.h>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <functional>
#include <optional>
#include <stdexcept>

#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"
#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/Simulator.hpp"
#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using namespace std::chrono_literals;
using test::latitudeDataref;
using test::numberOf;
using test::runningTimeDataref;
using test::runTask;

/// The faults of a simulator as its clients meet them, over real loopback sockets; only its time is virtual.
class FaultsTest : public testing::Test {
  protected:
    FaultsTest() { simulator.emplace(io.get_executor(), clock, test::standInOptions()); }

    Endpoint endpoint() const { return {"127.0.0.1", simulator->port()}; }

    HttpResponse fetch(const std::string& target, const std::string& body = "") {
        HttpRequest request;
        request.method = body.empty() ? "GET" : "POST";
        request.target = target;
        request.body = body;
        return runTask(io, fetchHttp(clientClock, endpoint(), std::move(request), 60s));
    }

    void order(const std::string& line) {
        EXPECT_EQ(fetch("/control", R"({"order":")" + line + "\"}").status, 200u) << line;
    }

    std::shared_ptr<WebSocketConnection> open() {
        auto connection = openWebSocket(io.get_executor(), clientClock, endpoint(), "/api/v2");
        return connection;
    }

    std::shared_ptr<WebSocketConnection> openSubscribed() {
        auto connection = open();
        const auto id = std::to_string(test::datarefId(simulator->world(), latitudeDataref));
        connection->send(
            R"({"req_id":5,"type":"dataref_subscribe_values","params":{"datarefs":[{"id":)" + id + "}]}}",
            WebSocketConnection::Kind::awaited);
        EXPECT_EQ(receive(*connection), R"({"req_id":5,"type":"result","success":true})");
        return connection;
    }

    /// The next message; "ended" when the connection has.
    std::string receive(WebSocketConnection& connection) {
        const auto message = runTask(io, connection.receive());
        return message ? message->content : "ended";
    }

    /// Notes in `out` what `receive` gives, whenever that is.
    void startReceiving(std::shared_ptr<WebSocketConnection> connection, std::optional<std::string>& out) {
        boost::asio::co_spawn(io, note(std::move(connection), out), boost::asio::detached);
    }

    static Task<> note(std::shared_ptr<WebSocketConnection> connection, std::optional<std::string>& out) {
        auto message = co_await connection->receive();
        out = message ? message->content : "ended";
    }

    void runUntil(const std::function<bool()>& isReached) {
        const auto deadline = std::chrono::steady_clock::now() + 60s;
        io.restart();
        while (!isReached() && std::chrono::steady_clock::now() < deadline)
            io.run_one_for(100ms);
        ASSERT_TRUE(isReached());
    }

    /// Lets the stand-in's time pass and all that follows from it happen.
    void pass(Clock::Duration duration) {
        for (Clock::Duration passed{}; passed < duration; passed += 100ms) {
            clock.advance(io, 100ms);
            io.restart();
            io.run_for(2ms);
        }
    }

    boost::asio::io_context io;
    test::VirtualClock clock;
    SystemClock clientClock;
    std::optional<Simulator> simulator;
};

TEST_F(FaultsTest, ARestartResetsEveryConnectionAndListensAgain) {
    const auto connection = openSubscribed();
    const auto catalogue = fetch("/api/v2/datarefs").body;
    const auto port = simulator->port();
    order("restart");
    EXPECT_EQ(receive(*connection), "ended");
    EXPECT_TRUE(connection->failure().has_value()); // nobody said goodbye
    EXPECT_EQ(simulator->port(), port);
    EXPECT_NE(fetch("/api/v2/datarefs").body, catalogue);
    openSubscribed();
}

TEST_F(FaultsTest, ASwappedRestartKeepsAllOtherIds) {
    const auto datarefs = fetch("/api/v2/datarefs").body;
    const auto up = test::commandId(simulator->world(), "sim/flight_controls/landing_gear_up");
    order("restart swapped");
    EXPECT_EQ(fetch("/api/v2/datarefs").body, datarefs);
    EXPECT_EQ(test::commandId(simulator->world(), "sim/flight_controls/landing_gear_down"), up);
    const auto commands = parseJson(fetch("/api/v2/commands").body);
    for (const auto& entry : commands.at("data").as_array()) {
        if (entry.at("id") == up) {
            EXPECT_EQ(entry.at("name"), "sim/flight_controls/landing_gear_down");
        }
    }
}

TEST_F(FaultsTest, AFreshRestartBeginsTheFlightAnew) {
    order("load Short final.sit");
    order("restart");
    EXPECT_EQ(simulator->world().flight().phase(), "final");
    order("restart fresh");
    EXPECT_EQ(simulator->world().flight().phase(), "cruise");
}

TEST_F(FaultsTest, WhileItIsAwayNobodyListens) {
    order("restart away 3000");
    EXPECT_THROW(fetch("/api/capabilities"), NetworkError);
    pass(2900ms);
    EXPECT_THROW(fetch("/api/capabilities"), NetworkError);
    pass(200ms);
    EXPECT_EQ(fetch("/api/capabilities").status, 200u);
}

TEST_F(FaultsTest, ItCanBeStoppedWhileItIsAway) {
    order("restart away 3000");
    simulator.reset();
    clock.advance(io, 4s);
    EXPECT_EQ(clock.sleeping(), 0u);
}

TEST_F(FaultsTest, ASilentOneAcceptsAndAnswersNothingUntilItIsToldTo) {
    const auto connection = openSubscribed();
    order("silent on");
    connection->ping();
    std::optional<std::string> told;
    startReceiving(connection, told);
    std::optional<HttpResponse> answer;
    const auto ask = [](Clock& real, Endpoint where, std::optional<HttpResponse>& out) -> Task<> {
        HttpRequest request;
        request.target = "/api/capabilities";
        auto fetched = co_await fetchHttp(real, std::move(where), std::move(request), 60s);
        out.emplace(std::move(fetched));
    };
    boost::asio::co_spawn(io, ask(clientClock, endpoint(), answer), boost::asio::detached);
    const double elapsed = numberOf(simulator->world(), runningTimeDataref);
    pass(2s);
    EXPECT_FALSE(told || answer || connection->signsOfLife().pongs > 0);
    EXPECT_EQ(numberOf(simulator->world(), runningTimeDataref), elapsed);
    order("silent off");
    pass(300ms);
    runUntil([&] { return told && answer && connection->signsOfLife().pongs > 0; });
    EXPECT_EQ(answer->status, 200u);
    EXPECT_EQ(parseJson(*told).at("type"), "dataref_update_values");
}

TEST_F(FaultsTest, ValuesThatStopCanStillBeReadAndPingsAreAnswered) {
    const auto connection = openSubscribed();
    const auto id = std::to_string(test::datarefId(simulator->world(), latitudeDataref));
    const auto read = [&] { return fetch("/api/v2/datarefs/" + id + "/value").body; };
    order("values_stop on");
    std::optional<std::string> told;
    startReceiving(connection, told);
    const auto before = read();
    connection->ping();
    pass(1s);
    runUntil([&] { return connection->signsOfLife().pongs == 1; });
    EXPECT_NE(read(), before);
    EXPECT_FALSE(told.has_value());
    order("values_stop off");
    pass(200ms);
    runUntil([&] { return told.has_value(); });
}

TEST_F(FaultsTest, UnansweredPingsStopNothingElse) {
    const auto asking = open();
    runTask(io, asking->opened());
    const auto told = openSubscribed();
    order("pings_unanswered on");
    asking->ping();
    pass(500ms);
    EXPECT_EQ(parseJson(receive(*told)).at("type"), "dataref_update_values");
    EXPECT_EQ(asking->signsOfLife().pongs, 0u);
    order("pings_unanswered off");
    asking->ping();
    runUntil([&] { return asking->signsOfLife().pongs == 1; });
}

TEST_F(FaultsTest, AMessageStopsInTheMiddleAndNothingFollowsOnThatConnection) {
    const auto connection = openSubscribed();
    order("mid_message on");
    std::optional<std::string> told;
    startReceiving(connection, told);
    pass(1s);
    connection->ping();
    EXPECT_TRUE(connection->signsOfLife().lastByteAt.has_value());
    order("mid_message off");
    pass(1s);
    EXPECT_FALSE(told || connection->signsOfLife().pongs > 0);
    openSubscribed();
    EXPECT_FALSE(told.has_value());
}

TEST_F(FaultsTest, ALateHandshakeIsAnsweredAfterItsTime) {
    order("handshake_late on 2000");
    const auto connection = open();
    connection->send("{}", WebSocketConnection::Kind::awaited);
    std::optional<std::string> told;
    startReceiving(connection, told);
    runUntil([&] { return clock.sleeping() == 2; }); // the flight and the handshake
    EXPECT_EQ(fetch("/api/capabilities").status, 200u);
    pass(1900ms);
    EXPECT_FALSE(told.has_value());
    pass(200ms);
    runUntil([&] { return told.has_value(); });
    EXPECT_EQ(parseJson(*told).at("type"), "result");
}

TEST_F(FaultsTest, IdleConnectionsAreClosedOnRequest) {
    const auto idle = open();
    runTask(io, idle->opened());
    pass(2s);
    order("idle_close on 60000");
    const auto busy = openSubscribed();
    std::optional<std::string> told;
    startReceiving(idle, told);
    pass(57900ms);
    EXPECT_FALSE(told.has_value());
    pass(300ms);
    runUntil([&] { return told.has_value(); });
    EXPECT_EQ(told, "ended");
    EXPECT_EQ(parseJson(receive(*busy)).at("type"), "dataref_update_values");
}

TEST_F(FaultsTest, ATooLongMessageEndsItsConnection) {
    const auto connection = openSubscribed();
    connection->send(std::string(128 * 1024, ' '), WebSocketConnection::Kind::awaited);
    EXPECT_EQ(parseJson(receive(*connection)).at("error_code"), "invalid_json");
    connection->send(std::string(128 * 1024 + 1, ' '), WebSocketConnection::Kind::awaited);
    EXPECT_EQ(receive(*connection), "ended");
}

TEST_F(FaultsTest, SubscribedValuesGoOnAfterTheMainMenu) {
    const auto connection = openSubscribed();
    order("main_menu on");
    std::optional<std::string> told;
    startReceiving(connection, told);
    pass(1s);
    EXPECT_FALSE(told.has_value());
    order("load");
    pass(200ms);
    runUntil([&] { return told.has_value(); });
}

TEST_F(FaultsTest, ALineThatIsNoOrderIsRefused) { EXPECT_THROW(simulator->obey("dance"), ApiError); }

} // namespace
} // namespace tarnly::simulator
