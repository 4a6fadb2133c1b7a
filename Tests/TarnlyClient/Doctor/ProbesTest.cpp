#include "TarnlyClient/Doctor/Probes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <map>
#include <string>
#include <thread>
#include <utility>

#include "Support/LoopbackHttpServer.hpp"

namespace tarnly::client {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Kind = SimulatorStage::Kind;
using Answers = std::map<std::string, HttpResponse>;

constexpr std::chrono::milliseconds serverPatience = 60s;

/// Answers by the path, else 404, on a thread of its own.
class Server {
  public:
    explicit Server(Answers answers)
        : answers_(std::move(answers)),
          server_(std::make_unique<test::LoopbackHttpServer>(
              io_, [this](const HttpRequest& request, bool) { return answer(request.target); })),
          place(server_->endpoint()),
          thread_([this] { io_.run(); }) {}
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        io_.stop();
        thread_.join();
    }

  private:
    Task<std::optional<HttpResponse>> answer(std::string target) const {
        const auto found = answers_.find(target);
        co_return found == answers_.end() ? HttpResponse{404, "text/plain", "no"} : found->second;
    }

    const Answers answers_;
    boost::asio::io_context io_{1};
    std::unique_ptr<test::LoopbackHttpServer> server_;

  public:
    const Endpoint place;

  private:
    std::thread thread_;
};

HttpResponse json(std::string body, unsigned status = 200) {
    return {status, "application/json", std::move(body)};
}

constexpr auto countPath = "/api/v2/datarefs/count";
constexpr auto capabilities = R"({"api":{"versions":["v1","v2"]},"x-plane":{"version":"12.1.4"}})";

SimulatorProbe probeOf(Answers answers) {
    const Server server(std::move(answers));
    return probeSimulator(server.place, serverPatience);
}

/// Where nobody listens.
Endpoint nobody() {
    boost::asio::io_context io;
    const boost::asio::ip::tcp::acceptor closed(io, {boost::asio::ip::address_v4::loopback(), 0});
    return {"127.0.0.1", closed.local_endpoint().port()};
}

TEST(Probes, ASimulatorWithAFlightHasDatarefs) {
    const auto probe =
        probeOf({{countPath, json(R"({"data":7000})")}, {"/api/capabilities", json(capabilities)}});
    EXPECT_EQ(probe.stage.kind, Kind::flightLoaded);
    EXPECT_EQ(probe.version, "12.1.4");
    EXPECT_THAT(probe.place, HasSubstr("127.0.0.1:"));
}

TEST(Probes, AtTheMainMenuThereAreNone) {
    const auto probe = probeOf({{countPath, json(R"({"data":0})")}});
    EXPECT_EQ(probe.stage.kind, Kind::mainMenu);
    EXPECT_THAT(probe.version, IsEmpty());
}

TEST(Probes, ASimulatorMayRefuse) {
    const auto probe = probeOf({{countPath, json(R"({"error_code":"x","error_message":"Disabled."})", 403)}});
    EXPECT_EQ(probe.stage.kind, Kind::refusing);
    EXPECT_EQ(probe.stage.detail, "Disabled.");
    EXPECT_EQ(probeOf({{countPath, {403, "text/plain", "Disabled."}}}).stage.kind, Kind::refusing);
}

TEST(Probes, AnOldSimulatorHasNoSuchApi) {
    const auto probe = probeOf({{"/api/capabilities", json(R"({"x-plane":{"version":"12.1.1"}})")}});
    EXPECT_EQ(probe.stage.kind, Kind::tooOld);
    EXPECT_EQ(probe.stage.detail, "12.1.1");
    EXPECT_EQ(probeOf({}).stage.kind, Kind::tooOld);
}

TEST(Probes, SomethingElseIsNoSimulator) {
    for (const auto& answer : {json("{}"), json("no JSON"), json("", 500)}) {
        EXPECT_EQ(probeOf({{countPath, answer}}).stage.kind, Kind::notRunning);
        EXPECT_EQ(probeOf({{countPath, answer}}).stage.detail, "something else answers on its port");
    }
    EXPECT_EQ(probeSimulator(nobody(), serverPatience).stage.kind, Kind::notRunning);
    EXPECT_EQ(probeSimulator(nobody(), serverPatience).stage.detail, "");
}

TEST(Probes, PagesAreOursOrNot) {
    const Server ours({{"/", {200, "text/html", "<h1>Tarnly</h1>"}}});
    const Server others({{"/", {200, "text/html", "<h1>Printer</h1>"}}});
    const auto probes = probePages({ours.place, others.place, nobody()}, serverPatience);
    ASSERT_THAT(probes, SizeIs(3));
    EXPECT_TRUE(probes[0].isOurs);
    EXPECT_EQ(probes[1].status, 200U);
    EXPECT_FALSE(probes[1].isOurs);
    EXPECT_EQ(probes[2].status, std::nullopt);
    EXPECT_EQ(probes[2].failure, "Connection refused");
    EXPECT_EQ(probes[2].place.find("127.0.0.1:"), 0U);
}

TEST(Probes, WhoDoesNotAnswerIsWaitedForALittle) {
    boost::asio::io_context io;
    const boost::asio::ip::tcp::acceptor silent(io, {boost::asio::ip::address_v4::loopback(), 0});
    const Endpoint place{"127.0.0.1", silent.local_endpoint().port()};
    EXPECT_EQ(probeSimulator(place, 1ms).stage.kind, Kind::silent);
    EXPECT_THAT(probePages({place}, 1ms).front().failure, Not(IsEmpty()));
}

TEST(Probes, ACompanionThatIsNotThereGivesNoValues) {
    const auto probe = probeValues(nobody(), {}, serverPatience);
    EXPECT_FALSE(probe.isPaired);
    EXPECT_THAT(probe.failure, HasSubstr("Connection refused"));
}

} // namespace
} // namespace tarnly::client
