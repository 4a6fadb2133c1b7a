#include "TarnlyXPlane/Link/WebApiRest.hpp"

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>

#include "Support/RunTask.hpp"
#include "TarnlyXPlane/FakeTransport.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"

namespace tarnly {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Case = NetworkError::Case;
using Kind = SimulatorStage::Kind;

const std::string catalogueUrl = "http://127.0.0.1:8086/api/v2/datarefs";
const std::string allowTraffic =
    "the simulator refuses connections: allow incoming traffic in the simulator's network settings";

class WebApiRestTest : public testing::Test {
  protected:
    WebApiRestTest() {
        transport->answer = [this](const HttpRequest& request) -> std::optional<HttpResponse> {
            const auto found = answers.find(request.target);
            if (found == answers.end()) return std::nullopt;
            if (!found->second) throw NetworkError(Case::connectionFailed, "gone");
            return found->second;
        };
    }

    void answerCatalogue(unsigned status, std::string body) {
        answers.insert_or_assign("/api/v2/datarefs", httpResponse(status, std::move(body)));
    }

    LinkFailure failureOfCatalogue() {
        try {
            clock.run(io, rest.catalogue("datarefs"));
        } catch (const LinkFailure& failure) {
            return failure;
        }
        throw std::logic_error("there is a catalogue");
    }

    boost::asio::io_context io;
    VirtualClock clock;
    WorkerPool workers{1};
    /// By target; absent for a request that fails.
    std::map<std::string, std::optional<HttpResponse>> answers;
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>(io.get_executor(), clock);
    WebApiRest rest{Endpoint{"127.0.0.1", 8086}, transport, workers};
};

TEST_F(WebApiRestTest, RefusalIsToldInTheSimulatorsOwnWordsWithTheCure) {
    answerCatalogue(403, R"({"error_code":"disabled","error_message":"Incoming traffic is disabled."})");
    const auto failure = failureOfCatalogue();
    EXPECT_EQ(failure,
              NetworkError(Case::connectionFailed, catalogueUrl + ": HTTP status 403: " +
                                                       "Incoming traffic is disabled: " + allowTraffic));
    EXPECT_EQ(failure.stage().kind, Kind::refusing);
    EXPECT_EQ(failure.stage().detail, "Incoming traffic is disabled");
}

TEST_F(WebApiRestTest, RefusalWithoutJsonIsToldWithTheCure) {
    for (const auto* body : {"", "<html>Forbidden</html>", "{", R"({"error_message":5})"}) {
        answerCatalogue(403, body);
        const auto failure = failureOfCatalogue();
        EXPECT_EQ(failure,
                  NetworkError(Case::connectionFailed, catalogueUrl + ": HTTP status 403: " + allowTraffic))
            << body;
        EXPECT_EQ(failure.stage().kind, Kind::refusing);
        EXPECT_EQ(failure.stage().detail, "");
    }
}

TEST_F(WebApiRestTest, NoCatalogueAtAllIsTooOldWithTheVersionThatItTells) {
    answerCatalogue(404, "<html></html>");
    answers["/api/capabilities"] = httpResponse(200, R"({"x-plane":{"version":"12.1.2"}})");
    const auto failure = failureOfCatalogue();
    EXPECT_EQ(failure, NetworkError(Case::connectionFailed,
                                    catalogueUrl + ": HTTP status 404: " +
                                        "the simulator is too old: X-Plane 12.1.4 or later is needed"));
    EXPECT_EQ(failure.stage().kind, Kind::tooOld);
    EXPECT_EQ(failure.stage().detail, "12.1.2");
}

TEST_F(WebApiRestTest, OnlyVersionsWithoutTheWebApiAreTooOld) {
    answerCatalogue(404, "<html></html>");
    for (const std::string version : {"12.1.4", "12.1.10", "12.2", "13.0.0-b1"}) {
        const auto body = R"({"x-plane":{"version":")" + version + "\"}}";
        answers["/api/capabilities"] = httpResponse(200, body);
        EXPECT_EQ(failureOfCatalogue().stage().kind, Kind::notRunning) << version;
    }
    for (const std::string version : {"12.1.3", "12.1.3-r2", "12.0.9", "11.55", "12"}) {
        const auto body = R"({"x-plane":{"version":")" + version + "\"}}";
        answers["/api/capabilities"] = httpResponse(200, body);
        EXPECT_EQ(failureOfCatalogue().stage().kind, Kind::tooOld) << version;
    }
}

TEST_F(WebApiRestTest, TooOldToTellItsVersionIsTooOldAllTheSame) {
    answerCatalogue(404, "<html></html>");
    EXPECT_EQ(failureOfCatalogue().stage().kind, Kind::tooOld);
    EXPECT_EQ(failureOfCatalogue().stage().detail, "");
    answers["/api/capabilities"] = std::nullopt;
    EXPECT_EQ(failureOfCatalogue().stage().kind, Kind::tooOld);
    EXPECT_EQ(failureOfCatalogue().stage().detail, "");
}

TEST_F(WebApiRestTest, WhatIsNoCatalogueIsAnInvalidResponse) {
    for (const auto* body : {"", "null", "[]", "{}", R"({"data":5})", R"({"data":[)", "<html></html>"}) {
        answerCatalogue(200, body);
        const auto failure = failureOfCatalogue();
        EXPECT_EQ(failure.which(), Case::invalidResponse);
        EXPECT_TRUE(failure.payload().starts_with(catalogueUrl + ": ")) << failure.what();
        EXPECT_EQ(failure.payload().find("HTTP status"), std::string::npos) << failure.what();
        EXPECT_EQ(failure.stage().kind, Kind::notRunning);
    }
}

TEST_F(WebApiRestTest, OtherStatusesStandInTheFailure) {
    answerCatalogue(500, "<html></html>");
    const auto failure = failureOfCatalogue();
    EXPECT_EQ(failure.which(), Case::invalidResponse);
    EXPECT_TRUE(failure.payload().starts_with(catalogueUrl + ": HTTP status 500: ")) << failure.what();
}

TEST_F(WebApiRestTest, AwkwardEntriesCostOnlyThemselves) {
    answerCatalogue(200,
                    "{\"data\":[null,5,[],{\"id\":1},{\"name\":\"a\"},{\"id\":\"2\",\"name\":\"b\"},"
                    "{\"id\":3,\"name\":\"c\xff\"},{\"id\":4,\"name\":\"d\"}]}");
    const auto ids = clock.run(io, rest.catalogue("datarefs"));
    EXPECT_EQ(ids, (IdsByName{{"c\xEF\xBF\xBD", 3}, {"d", 4}}));
}

TEST_F(WebApiRestTest, FailuresOfTheNetworkShowHowTheSimulatorStands) {
    answers["/api/v2/datarefs"] = std::nullopt;
    const auto failure = failureOfCatalogue();
    EXPECT_EQ(failure, NetworkError(Case::connectionFailed,
                                    "gone: the simulator is not running: start X-Plane 12.1.4 or later"));
    EXPECT_EQ(failure.stage().kind, Kind::notRunning);
}

TEST_F(WebApiRestTest, ASimulatorThatDoesNotAnswerIsSilentAfterTenSeconds) {
    transport->latency = 1h;
    const auto before = clock.now();
    const auto failure = failureOfCatalogue();
    EXPECT_EQ(failure.which(), Case::timedOut);
    EXPECT_EQ(failure.stage().kind, Kind::silent);
    EXPECT_EQ(clock.now() - before, 10s);
}

TEST_F(WebApiRestTest, VersionNeverFails) {
    answers["/api/capabilities"] = httpResponse(200, R"({"x-plane":{"version":"12.4.0"}})");
    EXPECT_EQ(clock.run(io, rest.version()), "12.4.0");
    answers["/api/capabilities"] = httpResponse(403, R"({"error_message":"off"})");
    EXPECT_EQ(clock.run(io, rest.version()), std::nullopt);
    answers["/api/capabilities"] = std::nullopt;
    EXPECT_EQ(clock.run(io, rest.version()), std::nullopt);
}

TEST_F(WebApiRestTest, SmallReadsWaitThreeSecondsAndAnswerWhateverTheStatus) {
    answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":7396})");
    answers["/api/v2/datarefs/12/value"] = httpResponse(404, "none");
    const auto count = clock.run(io, rest.datarefCount());
    EXPECT_EQ(count.body, R"({"data":7396})");
    EXPECT_EQ(clock.run(io, rest.datarefValue(12)).status, 404U);
    clock.run(io, rest.version());
    for (const auto& exchange : transport->exchanges)
        EXPECT_EQ(exchange.timeout, 3s) << exchange.request.target;
}

} // namespace
} // namespace tarnly
