#include "TarnlyXPlane/XPlaneBackend.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "TarnlyXPlane/BackendFixture.hpp"

namespace tarnly {
namespace {

using namespace test;
using Case = XPlaneBackendError::Case;

class XPlaneBackendTest : public BackendFixture {
  protected:
    XPlaneBackendTest() {
        transport->datarefs = {{"sim/x", 12}, {"sim/a", 13}, {"sim/odd[x]", 14}, {"sim/a[1]", 15}};
        transport->commands = {{"sim/c", 818}};
    }

    void answerActivations(std::vector<unsigned> statuses) {
        transport->answer = [statuses,
                             next = 0U](const HttpRequest& request) mutable -> std::optional<HttpResponse> {
            if (request.method != "POST") return std::nullopt;
            return httpResponse(statuses.at(next++), "null");
        };
    }

    /// The bodies of the activations.
    std::vector<std::string> activations() const {
        std::vector<std::string> bodies;
        for (const auto& exchange : transport->exchanges) {
            if (exchange.request.method != "POST") continue;
            EXPECT_EQ(exchange.request.target, "/api/v2/command/818/activate");
            EXPECT_EQ(exchange.timeout, 60s);
            bodies.push_back(exchange.request.body);
        }
        return bodies;
    }
};

TEST_F(XPlaneBackendTest, SimInfoNeedsNoSimulator) {
    const auto info = backend->simInfo();
    EXPECT_EQ(info.sim, "xplane");
    EXPECT_EQ(info.version, "unknown");
    EXPECT_TRUE(transport->exchanges.empty());
}

TEST_F(XPlaneBackendTest, CachedValueIsReturnedAtOnceHoweverOld) {
    connect();
    deliverValues({{12, "3.5"}});
    clock.advance(io, 1h);
    const auto before = clock.now();
    EXPECT_EQ(run(backend->getDataref("sim/x")), 3.5);
    EXPECT_EQ(clock.now(), before);
    EXPECT_TRUE(sent().empty());
}

TEST_F(XPlaneBackendTest, MissingValueIsSubscribedOnceAndAwaited) {
    connect();
    const auto read = start(backend->getDataref("sim/x"));
    ASSERT_EQ(sent().size(), 1U);
    EXPECT_EQ(sent()[0].at("type"), "dataref_subscribe_values");
    EXPECT_EQ(sent()[0].at("req_id"), 2);
    EXPECT_EQ(sentDatarefs(0), parseJson(R"([{"id":12}])"));
    EXPECT_FALSE(read->isDone);
    deliverValues({{12, "-7"}});
    ASSERT_TRUE(read->isDone) << "no time has passed";
    EXPECT_EQ(read->value, -7);
    EXPECT_EQ(sent().size(), 1U);
}

TEST_F(XPlaneBackendTest, ValueThatDoesNotComeTimesOut) {
    connect();
    const auto read = start(backend->getDataref("sim/x"));
    clock.advance(io, 979ms);
    EXPECT_FALSE(read->isDone);
    clock.advance(io, 1ms);
    ASSERT_TRUE(read->isDone);
    try {
        std::rethrow_exception(read->error);
    } catch (const XPlaneBackendError& error) {
        EXPECT_EQ(error, XPlaneBackendError(Case::timeout, "sim/x"));
    }
}

TEST_F(XPlaneBackendTest, ValueOfTheLastMillisecondStillCounts) {
    connect();
    const auto read = start(backend->getDataref("sim/x"));
    clock.advance(io, 979ms);
    deliverValues({{12, "5"}});
    clock.advance(io, 1ms);
    ASSERT_TRUE(read->isDone);
    EXPECT_FALSE(read->error);
    EXPECT_EQ(read->value, 5);
}

TEST_F(XPlaneBackendTest, UnknownDatarefFails) {
    const auto error = failureOf<XPlaneBackendError>(backend->getDataref("sim/none"));
    EXPECT_EQ(error, XPlaneBackendError(Case::unknownDataref, "sim/none"));
    EXPECT_TRUE(sent().empty());
}

TEST_F(XPlaneBackendTest, IndexedNameReadsAnElement) {
    connect();
    deliverValues({{13, "[1,2,4.5]"}});
    EXPECT_EQ(run(backend->getDataref("sim/a[2]")), 4.5);
    EXPECT_EQ(run(backend->getDataref("sim/a[+0]")), 1);
    EXPECT_TRUE(sent().empty());
}

TEST_F(XPlaneBackendTest, IndexedReadSubscribesTheWholeDataref) {
    connect();
    const auto read = start(backend->getDataref("sim/a[1]"));
    EXPECT_EQ(sentDatarefs(0), parseJson(R"([{"id":13}])"));
    deliverValues({{13, "[1,2]"}});
    clock.advance(io, 20ms);
    EXPECT_EQ(read->value, 2);
}

TEST_F(XPlaneBackendTest, ElementOutsideTheArrayTimesOutWithTheBaseName) {
    connect();
    deliverValues({{13, "[1,2]"}});
    for (const auto* name : {"sim/a[2]", "sim/a[-1]", "sim/a[9223372036854775807]"}) {
        const auto before = clock.now();
        const auto error = failureOf<XPlaneBackendError>(backend->getDataref(name));
        EXPECT_EQ(error, XPlaneBackendError(Case::timeout, "sim/a")) << name;
        EXPECT_EQ(clock.now() - before, 980ms) << name;
    }
    EXPECT_EQ(sent().size(), 1U) << "what has been asked for is not asked for again at once";
}

TEST_F(XPlaneBackendTest, IndexedNameOfAnUnknownBaseFailsWithTheBase) {
    const auto error = failureOf<XPlaneBackendError>(backend->getDataref("sim/none[1]"));
    EXPECT_EQ(error, XPlaneBackendError(Case::unknownDataref, "sim/none"));
}

TEST_F(XPlaneBackendTest, NamesThatAreNotIndexedAreLookedUpWhole) {
    connect();
    deliverValues({{14, "6"}});
    EXPECT_EQ(run(backend->getDataref("sim/odd[x]")), 6);
    for (const std::string name : {"sim/x[]", "sim/a[1][0]", "sim/a[9223372036854775808]", "sim/a[ 1]"}) {
        const auto error = failureOf<XPlaneBackendError>(backend->getDataref(name));
        EXPECT_EQ(error, XPlaneBackendError(Case::unknownDataref, name));
    }
}

TEST_F(XPlaneBackendTest, ScalarReadNeverTakesAnElementOfAnArray) {
    connect();
    deliverValues({{13, "[1,2]"}, {12, "5"}});
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->getDataref("sim/a")),
              XPlaneBackendError(Case::timeout, "sim/a"));
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->getDataref("sim/x[0]")),
              XPlaneBackendError(Case::timeout, "sim/x"));
}

TEST_F(XPlaneBackendTest, ReadsOverlap) {
    connect();
    const auto first = start(backend->getDataref("sim/x"));
    const auto second = start(backend->getDataref("sim/a[0]"));
    EXPECT_EQ(sent().size(), 2U);
    deliverValues({{13, "[8]"}});
    clock.advance(io, 20ms);
    EXPECT_FALSE(first->isDone);
    EXPECT_EQ(second->value, 8);
    deliverValues({{12, "9"}});
    clock.advance(io, 20ms);
    EXPECT_EQ(first->value, 9);
}

TEST_F(XPlaneBackendTest, WriteWithoutIndexSendsNone) {
    connect();
    run(backend->setDataref("sim/x", 1.0, std::nullopt));
    EXPECT_EQ(sent().at(0), parseJson(R"({"type":"dataref_set_values","req_id":2,
                                          "params":{"datarefs":[{"id":12,"value":1}]}})"));
}

TEST_F(XPlaneBackendTest, WriteWithIndexZeroSendsIndexZero) {
    connect();
    run(backend->setDataref("sim/a", -0.25, 0));
    run(backend->setDataref("sim/a", 2, -3));
    EXPECT_EQ(sentDatarefs(0), parseJson(R"([{"id":13,"value":-0.25,"index":0}])"));
    EXPECT_EQ(sentDatarefs(1), parseJson(R"([{"id":13,"value":2,"index":-3}])"));
}

TEST_F(XPlaneBackendTest, WriteTakesTheNameAsItStands) {
    connect();
    run(backend->setDataref("sim/a[1]", 1, std::nullopt));
    EXPECT_EQ(sentDatarefs(0), parseJson(R"([{"id":15,"value":1}])"));
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->setDataref("sim/x[0]", 1, std::nullopt)),
              XPlaneBackendError(Case::unknownDataref, "sim/x[0]"));
}

TEST_F(XPlaneBackendTest, WriteDoesNotTouchTheCache) {
    connect();
    deliverValues({{12, "3"}});
    run(backend->setDataref("sim/x", 8, std::nullopt));
    EXPECT_EQ(run(backend->getDataref("sim/x")), 3);
}

TEST_F(XPlaneBackendTest, WrittenDoublesReadBackTheSame) {
    connect();
    const std::vector<double> values{0.1,     47.123456789012345, 1e-300, 1.7976931348623157e308, 5e-324,
                                     -1.0 / 3};
    for (const double value : values)
        run(backend->setDataref("sim/x", value, std::nullopt));
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(sentDatarefs(i).at(0).at("value").to_number<double>(), values[i]);
}

TEST_F(XPlaneBackendTest, WriteOfAValueThatIsNotFiniteFailsAndSendsNothing) {
    connect();
    for (const double value :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        failureOf<JsonError>(backend->setDataref("sim/x", value, std::nullopt));
    EXPECT_TRUE(sent().empty());
}

TEST_F(XPlaneBackendTest, CommandIsActivatedWithoutBody) {
    answerActivations({200});
    run(backend->runCommand("sim/c"));
    EXPECT_EQ(activations(), (std::vector<std::string>{""}));
}

TEST_F(XPlaneBackendTest, EveryStatusOf200To299IsSuccess) {
    answerActivations({204, 299});
    run(backend->runCommand("sim/c"));
    run(backend->runCommand("sim/c"));
    EXPECT_EQ(activations().size(), 2U);
}

TEST_F(XPlaneBackendTest, OtherStatusesFailTheCommandWithoutASecondTry) {
    const std::vector<unsigned> statuses{199, 300, 401, 403, 404, 500};
    answerActivations(statuses);
    for (std::size_t i = 0; i < statuses.size(); ++i) {
        EXPECT_EQ(failureOf<XPlaneBackendError>(backend->runCommand("sim/c")),
                  XPlaneBackendError(Case::commandFailed, "sim/c"));
    }
    EXPECT_EQ(activations(), std::vector<std::string>(statuses.size(), ""));
}

TEST_F(XPlaneBackendTest, ActivationAnswered400IsRepeatedOnceWithADuration) {
    answerActivations({400, 200, 400, 400});
    run(backend->runCommand("sim/c"));
    ASSERT_EQ(activations().size(), 2U);
    EXPECT_EQ(activations()[0], "");
    EXPECT_EQ(parseJson(activations()[1]), parseJson(R"({"duration":0})"));

    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->runCommand("sim/c")),
              XPlaneBackendError(Case::commandFailed, "sim/c"));
    EXPECT_EQ(activations().size(), 4U);
}

TEST_F(XPlaneBackendTest, UnknownCommandFails) {
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->runCommand("sim/x")),
              XPlaneBackendError(Case::unknownCommand, "sim/x"));
    EXPECT_TRUE(activations().empty());
}

TEST_F(XPlaneBackendTest, TransportFailureOfACommandIsPassedOnUnlessTheAnswerIsNoHttp) {
    auto which = NetworkError::Case::connectionClosed;
    transport->answer = [&](const HttpRequest& request) -> std::optional<HttpResponse> {
        if (request.method == "POST") throw NetworkError(which, "x");
        return std::nullopt;
    };
    EXPECT_EQ(failureOf<NetworkError>(backend->runCommand("sim/c")).which(), which);
    which = NetworkError::Case::invalidResponse;
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->runCommand("sim/c")),
              XPlaneBackendError(Case::commandFailed, "sim/c"));
}

TEST_F(XPlaneBackendTest, OperationsPassOnTheFailureToConnect) {
    transport->answer = [](const HttpRequest&) -> std::optional<HttpResponse> {
        throw NetworkError(NetworkError::Case::connectionFailed, "refused");
    };
    const std::string expected =
        R"(connectionFailed("refused: the simulator is not running: start X-Plane 12.1.4 or later"))";
    EXPECT_EQ(failureOf<NetworkError>(backend->getDataref("sim/x")).what(), expected);
    EXPECT_EQ(failureOf<NetworkError>(backend->setDataref("sim/x", 1, std::nullopt)).what(), expected);
    EXPECT_EQ(failureOf<NetworkError>(backend->runCommand("sim/c")).what(), expected);
    EXPECT_EQ(failureOf<NetworkError>(backend->getTrackSample()).what(), expected);
    EXPECT_EQ(failureOf<NetworkError>(backend->moveToPreservingAgl(1, 2)).what(), expected);
    EXPECT_EQ(failureOf<NetworkError>(backend->applyAttitude(1, 2, 3, 4)).what(), expected);
    EXPECT_EQ(transport->exchanges.size(), 6U);
}

TEST_F(XPlaneBackendTest, AfterTheSimulatorWentReadsAnswerFromTheCacheAndRequestsFail) {
    connect();
    deliverValues({{12, "3"}});
    transport->webSocket->cancel();
    VirtualClock::settle(io);
    EXPECT_EQ(run(backend->getDataref("sim/x")), 3);
    failureOf<NetworkError>(backend->getDataref("sim/a[0]"));
    failureOf<NetworkError>(backend->setDataref("sim/x", 1, std::nullopt));
    EXPECT_EQ(transport->openedWebSockets.size(), 1U);
}

TEST_F(XPlaneBackendTest, DestructionWhileTheReceiveLoopWaitsEndsIt) {
    connect();
    backend.reset();
    VirtualClock::settle(io);
    EXPECT_TRUE(io.stopped());
    EXPECT_FALSE(transport->webSocket->isOpen());
}

} // namespace
} // namespace tarnly
