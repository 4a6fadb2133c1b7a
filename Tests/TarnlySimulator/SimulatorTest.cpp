#include "TarnlySimulator/Simulator.hpp"

#include <gtest/gtest.h>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <functional>
#include <optional>
#include <set>

#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Net/DatagramSocket.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"
#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using namespace std::chrono_literals;
using test::datarefId;
using test::landingLightsDataref;
using test::latitudeDataref;
using test::numberOf;
using test::runningTimeDataref;
using test::runTask;

/// A stand-in and its clients on one executor, over real loopback sockets; only the flight's time is virtual.
class SimulatorTest : public testing::Test {
  protected:
    Simulator& start(SimulatorOptions options = test::standInOptions()) {
        options.onSituation = [this](const std::string& line) { lines.push_back(line); };
        options.onIgnored = [this](const std::string& line) { lines.push_back(line); };
        simulator.emplace(io.get_executor(), clock, std::move(options));
        return *simulator;
    }

    HttpResponse fetch(const std::string& target, const std::string& method = "GET",
                       const std::string& body = "") {
        HttpRequest request;
        request.method = method;
        request.target = target;
        request.body = body;
        return runTask(io, fetchHttp(clientClock, {"127.0.0.1", simulator->port()}, std::move(request), 60s));
    }

    std::shared_ptr<WebSocketConnection> open(const std::string& target = "/api/v2") {
        return openWebSocket(io.get_executor(), clientClock, {"127.0.0.1", simulator->port()}, target);
    }

    /// The next message; "ended" when the connection has.
    std::string receive(WebSocketConnection& connection) {
        const auto message = runTask(io, connection.receive());
        return message ? message->content : "ended";
    }

    void subscribe(WebSocketConnection& connection, std::string_view name) {
        const auto id = std::to_string(datarefId(simulator->world(), name));
        connection.send(
            R"({"req_id":5,"type":"dataref_subscribe_values","params":{"datarefs":[{"id":)" + id + "}]}}",
            WebSocketConnection::Kind::awaited);
    }

    void sendDatagramOf(const std::string& bytes) {
        const auto view = std::as_bytes(std::span(bytes));
        runTask(io, sendDatagram({"127.0.0.1", simulator->udpPort()}, {view.begin(), view.end()}));
    }

    void runUntil(const std::function<bool()>& isReached) {
        const auto deadline = std::chrono::steady_clock::now() + 60s;
        io.restart();
        while (!isReached() && std::chrono::steady_clock::now() < deadline)
            io.run_one_for(100ms);
        ASSERT_TRUE(isReached());
    }

    boost::asio::io_context io;
    test::VirtualClock clock;
    SystemClock clientClock;
    std::vector<std::string> lines;
    std::optional<Simulator> simulator;
};

const std::string good = R"({"req_id":5,"type":"result","success":true})";

TEST_F(SimulatorTest, ServesTheCatalogueOverHttp) {
    start();
    const auto response = fetch("/api/v2/datarefs");
    EXPECT_EQ(response.status, 200u);
    EXPECT_EQ(parseJson(response.body).at("data").as_array().size(), test::shownDatarefs(simulator->world()));
    EXPECT_EQ(fetch("/nowhere").status, 404u);
}

TEST_F(SimulatorTest, ServesAHugeCatalogue) {
    auto options = test::standInOptions();
    options.datarefs = 120'000;
    start(options);
    const auto response = fetch("/api/v2/datarefs");
    EXPECT_GT(response.body.size(), 14'000'000u);
    EXPECT_EQ(fetch("/api/v2/datarefs/count").body, R"({"data":120000})");
}

TEST_F(SimulatorTest, TellsValuesTenTimesASecond) {
    start();
    const auto connection = open();
    subscribe(*connection, latitudeDataref);
    EXPECT_EQ(receive(*connection), good);
    std::set<std::string> updates;
    for (int tick = 0; tick < 10; ++tick) {
        clock.advance(io, 100ms);
        updates.insert(receive(*connection));
    }
    EXPECT_EQ(updates.size(), 10u);
    for (const auto& update : updates)
        EXPECT_EQ(parseJson(update).at("type"), "dataref_update_values");
    EXPECT_NEAR(numberOf(simulator->world(), runningTimeDataref), 1, 1e-6);
}

TEST_F(SimulatorTest, TheFlightGoesOnAtItsSpeedWithoutAnyClient) {
    auto options = test::standInOptions();
    options.speed = 20;
    start(options);
    clock.advance(io, 3s);
    EXPECT_NEAR(numberOf(simulator->world(), runningTimeDataref), 60, 1e-6);
}

TEST_F(SimulatorTest, ClientsHaveSubscriptionsOfTheirOwn) {
    start();
    const auto one = open();
    const auto other = open();
    subscribe(*one, landingLightsDataref);
    EXPECT_EQ(receive(*one), good);
    subscribe(*other, latitudeDataref);
    EXPECT_EQ(receive(*other), good);
    EXPECT_EQ(simulator->connections(), 2u);
    clock.advance(io, 100ms);
    const auto told = parseJson(receive(*one));
    EXPECT_TRUE(told.at("data").as_object().contains(
        std::to_string(datarefId(simulator->world(), landingLightsDataref))));
    EXPECT_EQ(told.at("data").as_object().size(), 1u);
}

TEST_F(SimulatorTest, RefusesUpgradesElsewhereAndWhileTrafficIsDisabled) {
    start();
    EXPECT_EQ(receive(*open("/api/v9")), "ended");
    simulator->world().quirks.trafficDisabled = true;
    const auto refused = open();
    EXPECT_EQ(receive(*refused), "ended");
    EXPECT_TRUE(refused->failure().has_value());
    EXPECT_EQ(fetch("/api/v2/datarefs").status, 403u);
}

TEST_F(SimulatorTest, GarbageIsAnsweredAndTheConnectionLivesOn) {
    start();
    const auto connection = open();
    connection->send("garbage \xE2\x82\xAC", WebSocketConnection::Kind::awaited);
    EXPECT_EQ(parseJson(receive(*connection)).at("success"), false);
    subscribe(*connection, landingLightsDataref);
    EXPECT_EQ(receive(*connection), good);
}

TEST_F(SimulatorTest, QuirksAreFlippedOverHttpEvenWhileTrafficIsDisabled) {
    start();
    EXPECT_EQ(fetch("/control", "POST", R"({"quirk":"traffic-disabled","on":true})").status, 200u);
    EXPECT_EQ(fetch("/api/capabilities").status, 403u);
    EXPECT_EQ(fetch("/control", "POST", R"({"quirk":"traffic-disabled","on":false})").status, 200u);
    EXPECT_EQ(fetch("/api/capabilities").status, 200u);
}

TEST_F(SimulatorTest, DroppingHangsUpOnEveryWebSocket) {
    start();
    const auto connection = open();
    subscribe(*connection, landingLightsDataref);
    EXPECT_EQ(receive(*connection), good);
    EXPECT_EQ(fetch("/control", "POST", R"({"quirk":"drop"})").status, 200u);
    EXPECT_EQ(receive(*connection), "ended");
    runUntil([&] { return simulator->connections() == 0; });
}

TEST_F(SimulatorTest, ARestartDrawsOtherIdsAndHangsUp) {
    start();
    const auto before = fetch("/api/v2/datarefs").body;
    const auto connection = open();
    subscribe(*connection, landingLightsDataref);
    EXPECT_EQ(receive(*connection), good);
    fetch("/control", "POST", R"({"quirk":"restart"})");
    EXPECT_EQ(receive(*connection), "ended");
    EXPECT_NE(fetch("/api/v2/datarefs").body, before);
}

TEST_F(SimulatorTest, WebSocketsAreDroppedAtTheirAge) {
    auto options = test::standInOptions();
    options.dropAfter = 2s;
    start(options);
    const auto connection = open();
    subscribe(*connection, landingLightsDataref);
    EXPECT_EQ(receive(*connection), good);
    clock.advance(io, 1s);
    EXPECT_EQ(simulator->connections(), 1u);
    clock.advance(io, 1100ms);
    clock.advance(io, 500ms); // the client reads no further, and so does not answer the close
    runUntil([&] { return simulator->connections() == 0; });
}

TEST_F(SimulatorTest, SlowAnswersTakeTheirTime) {
    auto options = test::standInOptions();
    options.quirks.slow = true;
    options.quirks.slowBy = 700ms;
    start(options);
    std::optional<HttpResponse> response;
    const auto fetchCounted = [](Clock& real, std::uint16_t port,
                                 std::optional<HttpResponse>& out) -> Task<> {
        Endpoint endpoint{"127.0.0.1", port};
        HttpRequest request;
        request.target = "/api/capabilities";
        auto fetched = co_await fetchHttp(real, std::move(endpoint), std::move(request), 60s);
        out.emplace(std::move(fetched));
    };
    boost::asio::co_spawn(io, fetchCounted(clientClock, simulator->port(), response), boost::asio::detached);
    runUntil([&] { return clock.sleeping() == 2; }); // the flight and the answer
    clock.advance(io, 600ms);
    EXPECT_FALSE(response.has_value());
    clock.advance(io, 100ms);
    runUntil([&] { return response.has_value(); });
    EXPECT_EQ(response->status, 200u);
}

TEST_F(SimulatorTest, LoadsSituationsAndReportsThem) {
    start();
    std::string bytes("SIMO\0\1\0\0\0", 9);
    bytes += "Output/situations/Long final.sit";
    bytes.resize(161, '\0');
    sendDatagramOf(bytes);
    runUntil([&] { return !lines.empty(); });
    EXPECT_EQ(lines.back(), "Situation loaded: Output/situations/Long final.sit");
    EXPECT_EQ(simulator->world().flight().phase(), "final");
}

TEST_F(SimulatorTest, IgnoresOtherDatagramsAloud) {
    start();
    sendDatagramOf("hello");
    sendDatagramOf(std::string(5000, 'x'));
    runUntil([&] { return lines.size() == 2; });
    EXPECT_EQ(lines[0], "Datagram ignored: it has 5 bytes instead of 161");
    EXPECT_EQ(lines[1], "Datagram ignored: it has 1024 bytes instead of 161");
    EXPECT_EQ(simulator->world().flight().phase(), "cruise");
}

TEST_F(SimulatorTest, APortInUseIsAnError) {
    start();
    auto web = test::standInOptions();
    web.port = simulator->port();
    EXPECT_THROW(Simulator(io.get_executor(), clock, web), NetworkError);
    auto udp = test::standInOptions();
    udp.udpPort = simulator->udpPort();
    EXPECT_THROW(Simulator(io.get_executor(), clock, udp), NetworkError);
}

TEST_F(SimulatorTest, StoppingFreesThePortsAndHangsUp) {
    start();
    const auto connection = open();
    subscribe(*connection, landingLightsDataref);
    EXPECT_EQ(receive(*connection), good);
    auto options = test::standInOptions();
    options.port = simulator->port();
    options.udpPort = simulator->udpPort();
    simulator.reset();
    EXPECT_EQ(receive(*connection), "ended");
    start(options);
    EXPECT_EQ(fetch("/api/capabilities").status, 200u);
}

} // namespace
} // namespace tarnly::simulator
