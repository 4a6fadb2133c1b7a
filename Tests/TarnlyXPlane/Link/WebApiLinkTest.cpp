#include "TarnlyXPlane/Link/WebApiLink.hpp"

#include <gtest/gtest.h>

#include <boost/asio/detached.hpp>

#include "TarnlyXPlane/BackendFixture.hpp"

namespace tarnly {
namespace {

using namespace test;
using Lines = std::vector<std::string>;

class WebApiLinkTest : public BackendFixture {
  protected:
    WebApiLinkTest() {
        backend.reset();
        transport->datarefs = {{"sim/x", 12}, {"sim/a", 13}};
        transport->commands = {{"sim/c", 818}};
    }

    void TearDown() override {
        link->close();
        BackendFixture::TearDown();
    }

    void deliver(std::string text, WebSocketConnection::Opcode opcode = WebSocketConnection::Opcode::text) {
        transport->webSocket->deliver(std::move(text), opcode);
        VirtualClock::settle(io);
    }

    std::shared_ptr<WebApiLink> link = std::make_shared<WebApiLink>(
        io.get_executor(), Endpoint{"127.0.0.1", 8086}, transport, clock, workers);
};

std::vector<DatarefEntry> entryFor(std::int64_t id) {
    std::vector<DatarefEntry> entries(1);
    entries.front().id = id;
    return entries;
}

TEST_F(WebApiLinkTest, URLs) {
    EXPECT_EQ(link->baseUrl(), "http://127.0.0.1:8086/api/v2/");
    EXPECT_EQ(link->webSocketUrl(), "ws://127.0.0.1:8086/api/v2");
    const WebApiLink overIPv6(io.get_executor(), Endpoint{"::1", 80}, transport, clock, workers);
    EXPECT_EQ(overIPv6.baseUrl(), "http://[::1]:80/api/v2/");
}

TEST(WebApiLinkDeathTest, HostThatCannotStandInAUrlEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto* host : {"", "two words", "a/b", "user@host", "a\nb"}) {
        EXPECT_DEATH(
            {
                boost::asio::io_context io;
                WorkerPool workers(1);
                VirtualClock clock;
                WebApiLink(io.get_executor(), Endpoint{host, 8086}, nullptr, clock, workers);
            },
            "")
            << host;
    }
}

TEST_F(WebApiLinkTest, ConnectingLoadsBothCataloguesThenOpensTheWebSocket) {
    run(link->ensureConnected());
    EXPECT_EQ(transport->exchangeLines(), (Lines{"GET /api/v2/datarefs", "GET /api/v2/commands"}));
    EXPECT_EQ(link->datarefIds(), (IdsByName{{"sim/x", 12}, {"sim/a", 13}}));
    EXPECT_EQ(link->commandIds(), (IdsByName{{"sim/c", 818}}));
    ASSERT_EQ(transport->openedWebSockets.size(), 1U);
    EXPECT_EQ(transport->openedWebSockets[0].first, (Endpoint{"127.0.0.1", 8086}));
    EXPECT_EQ(transport->openedWebSockets[0].second, "/api/v2");
}

TEST_F(WebApiLinkTest, RequestsAskForJsonOfTheSimulatorWithoutABody) {
    run(link->ensureConnected());
    const std::vector<std::pair<std::string, std::string>> headers{{"Accept", "application/json"},
                                                                   {"Content-Type", "application/json"}};
    for (const auto& exchange : transport->exchanges) {
        EXPECT_EQ(exchange.endpoint, (Endpoint{"127.0.0.1", 8086}));
        EXPECT_EQ(exchange.request.headers, headers);
        EXPECT_EQ(exchange.request.body, "");
        EXPECT_EQ(exchange.timeout, 10s);
    }
}

TEST_F(WebApiLinkTest, ConnectsOnlyOnce) {
    run(link->ensureConnected());
    run(link->ensureConnected());
    EXPECT_EQ(transport->exchanges.size(), 2U);
    EXPECT_EQ(transport->openedWebSockets.size(), 1U);
}

TEST_F(WebApiLinkTest, OverlappingCallsShareOneAttempt) {
    transport->latency = 10ms;
    int connected = 0;
    const auto count = [&](std::exception_ptr error) { connected += error ? 0 : 1; };
    for (int i = 0; i < 3; ++i)
        boost::asio::co_spawn(io, link->ensureConnected(), count);
    clock.advance(io, 19ms);
    EXPECT_EQ(connected, 0);
    clock.advance(io, 1ms);
    EXPECT_EQ(connected, 3);
    EXPECT_EQ(transport->exchanges.size(), 2U);
    EXPECT_EQ(transport->openedWebSockets.size(), 1U);
}

TEST_F(WebApiLinkTest, OverlappingCallsShareTheFailureAndTheNextTriesAgain) {
    transport->latency = 10ms;
    transport->answer = [](const HttpRequest&) -> std::optional<HttpResponse> {
        throw NetworkError(NetworkError::Case::connectionFailed, "refused");
    };
    int failed = 0;
    const auto count = [&](std::exception_ptr error) { failed += error ? 1 : 0; };
    for (int i = 0; i < 3; ++i)
        boost::asio::co_spawn(io, link->ensureConnected(), count);
    clock.advance(io, 10ms);
    EXPECT_EQ(failed, 3);
    EXPECT_EQ(transport->exchanges.size(), 1U);

    transport->answer = nullptr;
    run(link->ensureConnected());
    EXPECT_EQ(transport->exchanges.size(), 3U);
    EXPECT_EQ(transport->openedWebSockets.size(), 1U);
}

TEST_F(WebApiLinkTest, TransportFailureIsPassedOnUnchanged) {
    transport->answer = [](const HttpRequest&) -> std::optional<HttpResponse> {
        throw NetworkError(NetworkError::Case::timedOut, "127.0.0.1:8086");
    };
    const auto error = failureOf<NetworkError>(link->ensureConnected());
    EXPECT_STREQ(error.what(), R"(timedOut("127.0.0.1:8086"))");
}

TEST_F(WebApiLinkTest, BodyWithoutDataFailsAndNamesTheUrl) {
    transport->answer = [](const HttpRequest&) { return httpResponse(200, "{}"); };
    const auto error = failureOf<NetworkError>(link->ensureConnected());
    EXPECT_EQ(error.which(), NetworkError::Case::invalidResponse);
    EXPECT_TRUE(
        std::string(error.what()).starts_with("invalidResponse(\"http://127.0.0.1:8086/api/v2/datarefs: "));
    EXPECT_TRUE(transport->openedWebSockets.empty());

    transport->answer = nullptr;
    run(link->ensureConnected());
    EXPECT_EQ(transport->exchanges.size(), 3U);
}

TEST_F(WebApiLinkTest, RefusalNamesTheStatus) {
    transport->answer = [](const HttpRequest&) {
        return httpResponse(403, R"({"error_code":"disabled","error_message":"off"})");
    };
    const std::string text = failureOf<NetworkError>(link->ensureConnected()).what();
    EXPECT_NE(text.find("datarefs: HTTP status 403: "), std::string::npos) << text;
}

TEST_F(WebApiLinkTest, StatusOfACatalogueDoesNotMatterWhenItDecodes) {
    transport->answer = [](const HttpRequest&) { return httpResponse(500, catalogueBody({{"sim/x", 5}})); };
    run(link->ensureConnected());
    EXPECT_EQ(link->datarefIds().at("sim/x"), 5);
}

TEST_F(WebApiLinkTest, DatarefsStayWhenTheCommandsFail) {
    transport->answer = [](const HttpRequest& request) -> std::optional<HttpResponse> {
        if (request.target == "/api/v2/commands") return httpResponse(404, "<html></html>");
        return std::nullopt;
    };
    failureOf<NetworkError>(link->ensureConnected());
    EXPECT_EQ(link->datarefIds().at("sim/x"), 12);

    transport->answer = nullptr;
    transport->datarefs = {{"sim/x", 99}};
    run(link->ensureConnected());
    EXPECT_EQ(link->datarefIds(), (IdsByName{{"sim/x", 99}}));
}

TEST_F(WebApiLinkTest, LoadsACatalogueOf120000Entries) {
    std::map<std::string, std::int64_t> many;
    const std::string path =
        "sim/an/aircraft/with/a/very/long/path/of/dataref/names/that/goes/on/and/on/number_";
    for (std::int64_t id = 0; id < 120'000; ++id)
        many.emplace(path + std::to_string(id), 40'000'000'000 + id);
    auto body = catalogueBody(many);
    EXPECT_GT(body.size(), 15'000'000U);
    transport->answer = [&](const HttpRequest& request) -> std::optional<HttpResponse> {
        if (request.target == "/api/v2/commands") return std::nullopt;
        return httpResponse(200, body);
    };
    runTask(io, link->ensureConnected());
    EXPECT_EQ(link->datarefIds().size(), 120'000U);
    EXPECT_EQ(link->datarefIds().at(path + "119999"), 40'000'119'999);
}

TEST_F(WebApiLinkTest, LongCatalogueThatIsBrokenFailsToo) {
    transport->answer = [](const HttpRequest&) { return httpResponse(200, std::string(100'000, '[')); };
    try {
        runTask(io, link->ensureConnected());
        ADD_FAILURE() << "connected";
    } catch (const NetworkError& error) {
        EXPECT_EQ(error.which(), NetworkError::Case::invalidResponse);
    }
}

TEST_F(WebApiLinkTest, SendingBeforeTheConnectionDoesNothing) {
    run(link->send("dataref_set_values", entryFor(12)));
    EXPECT_TRUE(transport->exchanges.empty());
    EXPECT_EQ(transport->webSocket, nullptr);
}

TEST_F(WebApiLinkTest, MessagesAreNumberedFromOneAndHaveThreeKeys) {
    run(link->ensureConnected());
    run(link->send("dataref_subscribe_values", entryFor(12)));
    auto write = entryFor(13);
    write.front().value = 0.5;
    write.front().index = 0;
    run(link->send("dataref_set_values", write));
    run(link->send("dataref_subscribe_values", {}));
    ASSERT_EQ(sent().size(), 3U);
    EXPECT_EQ(
        sent()[0],
        parseJson(R"({"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":[{"id":12}]}})"));
    EXPECT_EQ(sent()[1], parseJson(R"({"type":"dataref_set_values","req_id":2,
                                       "params":{"datarefs":[{"id":13,"value":0.5,"index":0}]}})"));
    EXPECT_EQ(sent()[2],
              parseJson(R"({"type":"dataref_subscribe_values","req_id":3,"params":{"datarefs":[]}})"));
    EXPECT_EQ(transport->webSocket->kinds, std::vector(3, WebSocketConnection::Kind::awaited));
}

TEST_F(WebApiLinkTest, UpdatesReachTheCacheAndOtherMessagesDoNot) {
    run(link->ensureConnected());
    deliver(R"({"type":"dataref_update_values","data":{"12":3.5,"13":[1,2],"x":4}})");
    deliver(R"({"type":"result","req_id":1,"success":true,"data":{"12":9}})");
    deliver("no JSON");
    deliver(R"({"type":"dataref_update_values","data":{"12":9}})", WebSocketConnection::Opcode::binary);
    EXPECT_EQ(link->values().scalar(12), 3.5);
    EXPECT_EQ(link->values().array(13), (std::vector<double>{1, 2}));
    deliver(R"({"type":"dataref_update_values","data":{"12":4}})");
    EXPECT_EQ(link->values().scalar(12), 4);
}

TEST_F(WebApiLinkTest, LongMessagesAreTakenInAndKeepTheirOrder) {
    std::string numbers = "0";
    for (int i = 1; i < 50'000; ++i)
        numbers += "," + std::to_string(i);
    const auto text = R"({"type":"dataref_update_values","data":{"12":1,"13":[)" + numbers + "]}}";
    ASSERT_GT(text.size(), 64U * 1024);
    runTask(io, link->handleMessage(text));
    runTask(io, link->handleMessage(R"({"type":"dataref_update_values","data":{"12":2}})"));
    EXPECT_EQ(link->values().element(13, 49'999), 49'999);
    EXPECT_EQ(link->values().scalar(12), 2);
}

TEST_F(WebApiLinkTest, AfterTheWebSocketDiedRequestsFailAndValuesStay) {
    run(link->ensureConnected());
    deliver(R"({"type":"dataref_update_values","data":{"12":3.5}})");
    transport->webSocket->cancel();
    VirtualClock::settle(io);
    EXPECT_TRUE(io.stopped()) << "the receive loop goes on";
    run(link->ensureConnected());
    EXPECT_EQ(transport->openedWebSockets.size(), 1U);
    failureOf<NetworkError>(link->send("dataref_subscribe_values", entryFor(12)));
    EXPECT_EQ(link->values().scalar(12), 3.5);
}

TEST_F(WebApiLinkTest, ClosingEndsTheReceiveLoopForGood) {
    run(link->ensureConnected());
    link->close();
    link->close();
    VirtualClock::settle(io);
    EXPECT_TRUE(io.stopped());
    EXPECT_FALSE(transport->webSocket->isOpen());
    failureOf<NetworkError>(link->send("dataref_subscribe_values", entryFor(12)));
}

TEST_F(WebApiLinkTest, ClosingDuringAnAttemptOpensNoWebSocket) {
    transport->latency = 10ms;
    std::exception_ptr failure;
    boost::asio::co_spawn(io, link->ensureConnected(), [&](std::exception_ptr error) { failure = error; });
    VirtualClock::settle(io);
    link->close();
    clock.advance(io, 20ms);
    EXPECT_THROW(std::rethrow_exception(failure), NetworkError);
    EXPECT_TRUE(transport->openedWebSockets.empty());
}

TEST_F(WebApiLinkTest, ClosedBeforeTheConnectionItAsksNothing) {
    link->close();
    EXPECT_EQ(failureOf<NetworkError>(link->ensureConnected()).which(), NetworkError::Case::connectionClosed);
    EXPECT_TRUE(transport->exchanges.empty());
}

TEST_F(WebApiLinkTest, ReceiveLoopKeepsTheLinkUntilItEnds) {
    run(link->ensureConnected());
    const std::weak_ptr<WebApiLink> observed = link;
    link.reset();
    EXPECT_FALSE(observed.expired());
    deliver(R"({"type":"dataref_update_values","data":{"12":3.5}})");
    link = observed.lock();
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->values().scalar(12), 3.5);
}

TEST_F(WebApiLinkTest, PostHasThePathBelowTheBaseAndTheBody) {
    run(link->post("command/818/activate", "{}"));
    EXPECT_EQ(transport->exchangeLines(), (Lines{"POST /api/v2/command/818/activate"}));
    EXPECT_EQ(transport->exchanges[0].request.body, "{}");
}

} // namespace
} // namespace tarnly
