#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

#include <gtest/gtest.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>

#include "Support/LoopbackHttpServer.hpp"
#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyXPlane/FakeTransport.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly {
namespace {

using namespace test;
using namespace std::chrono_literals;

/// A backend and a simulator on loopback sockets, in real time.
class NetworkTransportTest : public testing::Test {
  protected:
    NetworkTransportTest() {
        server.emplace(
            io, [this](HttpRequest request, bool isUpgrade) { return answer(std::move(request), isUpgrade); },
            [this](std::shared_ptr<WebSocketConnection> connection) {
                simulatorSide = connection;
                boost::asio::co_spawn(io, serve(connection), boost::asio::detached);
            });
        backend =
            std::make_shared<XPlaneBackend>(io.get_executor(), server->endpoint(),
                                            makeNetworkTransport(io.get_executor(), clock), clock, workers);
    }

    Task<std::optional<HttpResponse>> answer(HttpRequest request, bool isUpgrade) {
        std::optional<HttpResponse> response;
        requests.push_back(request.method + " " + request.target + (isUpgrade ? " upgrade" : ""));
        bodies.push_back(request.body);
        if (isUpgrade) co_return response;
        if (request.method == "POST")
            response = httpResponse(request.body.empty() ? 400 : 200, "null");
        else
            response =
                httpResponse(200, catalogueBody(request.target == "/api/v2/datarefs" ? datarefs : commands));
        co_return response;
    }

    /// Notes each message and, for a subscription, sends `update`.
    Task<> serve(std::shared_ptr<WebSocketConnection> connection) {
        for (;;) {
            auto message = co_await connection->receive();
            if (!message) break;
            received.push_back(parseJson(message->content));
            const bool isSubscription = received.back().at("type") == "dataref_subscribe_values";
            if (isSubscription) connection->send(update, WebSocketConnection::Kind::awaited);
        }
        hasEnded = true;
    }

    template <typename T>
    T run(Task<T> task) {
        return runTask(io, std::move(task));
    }

    /// Lets all run until `condition` holds, for a minute at most.
    void runUntil(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + 1min;
        io.restart();
        while (!condition() && io.run_one_until(deadline) > 0) {
        }
        ASSERT_TRUE(condition());
    }

    std::map<std::string, std::int64_t> datarefs{{"sim/x", 12}, {"sim/a", 13}};
    std::map<std::string, std::int64_t> commands{{"sim/c", 818}};
    std::string update = R"({"type":"dataref_update_values","data":{"12":3.5,"13":[1,2,1e+9999]}})";

    std::vector<std::string> requests;
    std::vector<std::string> bodies;
    std::vector<boost::json::value> received;
    bool hasEnded = false;

    boost::asio::io_context io;
    SystemClock clock;
    WorkerPool workers{1};
    std::optional<LoopbackHttpServer> server;
    std::shared_ptr<WebSocketConnection> simulatorSide;
    std::shared_ptr<XPlaneBackend> backend;
};

TEST_F(NetworkTransportTest, ReadsThroughTheWebSocket) {
    EXPECT_EQ(run(backend->getDataref("sim/x")), 3.5);
    EXPECT_EQ(requests, (std::vector<std::string>{"GET /api/v2/datarefs", "GET /api/v2/commands",
                                                  "GET /api/v2 upgrade"}));
    ASSERT_EQ(received.size(), 1U);
    EXPECT_EQ(
        received[0],
        parseJson(R"({"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":[{"id":12}]}})"));
}

TEST_F(NetworkTransportTest, WriteBeforeTheHandshakeIsNotLost) {
    run(backend->setDataref("sim/a", 0.1, 3));
    runUntil([&] { return !received.empty(); });
    EXPECT_EQ(received[0], parseJson(R"({"type":"dataref_set_values","req_id":1,
                                         "params":{"datarefs":[{"id":13,"value":0.1,"index":3}]}})"));
}

TEST_F(NetworkTransportTest, CommandThatNeedsADurationIsRepeated) {
    run(backend->runCommand("sim/c"));
    ASSERT_GE(requests.size(), 2U);
    EXPECT_EQ(requests[requests.size() - 2], "POST /api/v2/command/818/activate");
    EXPECT_EQ(requests.back(), "POST /api/v2/command/818/activate");
    EXPECT_EQ(bodies[bodies.size() - 2], "");
    EXPECT_EQ(parseJson(bodies.back()), parseJson(R"({"duration":0})"));
}

TEST_F(NetworkTransportTest, LongUpdatesAreRead) {
    std::string numbers = "0";
    for (int i = 1; i < 50'000; ++i)
        numbers += "," + std::to_string(i);
    update = R"({"type":"dataref_update_values","data":{"13":[)" + numbers + "]}}";
    ASSERT_GT(update.size(), 64U * 1024);
    EXPECT_EQ(run(backend->getDataref("sim/a[49999]")), 49'999);
}

TEST_F(NetworkTransportTest, LoadsACatalogueOf120000Entries) {
    const std::string path =
        "sim/an/aircraft/with/a/very/long/path/of/dataref/names/that/goes/on/and/on/number_";
    for (std::int64_t id = 100; id < 120'100; ++id)
        datarefs.emplace(path + std::to_string(id), id);
    EXPECT_EQ(run(backend->getDataref("sim/x")), 3.5);
    run(backend->setDataref(path + "120099", 1, std::nullopt));
    runUntil([&] { return received.size() == 2; });
    EXPECT_EQ(received[1].at("params").at("datarefs"), parseJson(R"([{"id":120099,"value":1}])"));
}

TEST_F(NetworkTransportTest, WithoutASimulatorTheConnectionFails) {
    server.reset();
    try {
        run(backend->getDataref("sim/x"));
        ADD_FAILURE() << "connected";
    } catch (const NetworkError& error) {
        EXPECT_EQ(error.which(), NetworkError::Case::connectionFailed);
    }
}

TEST_F(NetworkTransportTest, WritesFailAfterTheSimulatorWent) {
    run(backend->getDataref("sim/x"));
    simulatorSide->cancel();
    runUntil([&] { return hasEnded; });
    // The first ones may still find room in the socket.
    bool hasFailed = false;
    for (int i = 0; i < 1000 && !hasFailed; ++i) {
        try {
            run(backend->setDataref("sim/x", 1, std::nullopt));
        } catch (const NetworkError&) {
            hasFailed = true;
        }
    }
    EXPECT_TRUE(hasFailed);
    EXPECT_EQ(run(backend->getDataref("sim/x")), 3.5);
}

TEST_F(NetworkTransportTest, ReleasedBackendHangsUp) {
    run(backend->getDataref("sim/x"));
    backend.reset();
    runUntil([&] { return hasEnded; });
    EXPECT_TRUE(hasEnded);
}

TEST_F(NetworkTransportTest, EventLoopMayEndWithTheReceiveLoopWaiting) {
    run(backend->getDataref("sim/x"));
    EXPECT_FALSE(hasEnded);
}

TEST_F(NetworkTransportTest, DatagramsAreSent) {
    using boost::asio::ip::udp;
    udp::socket receiver(io, udp::endpoint(boost::asio::ip::address_v4::loopback(), 0));
    const auto transport = makeNetworkTransport(io.get_executor(), clock);
    const Endpoint endpoint{"127.0.0.1", receiver.local_endpoint().port()};
    run(transport->sendDatagram(endpoint, std::vector<std::byte>(161, std::byte{7})));
    std::vector<std::byte> bytes(1000);
    bytes.resize(receiver.receive(boost::asio::buffer(bytes)));
    EXPECT_EQ(bytes, std::vector<std::byte>(161, std::byte{7}));
}

} // namespace
} // namespace tarnly
