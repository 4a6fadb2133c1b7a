#include "TarnlyCore/CompanionHost.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FakeBackend.hpp"
#include "Support/RunTask.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly {
namespace {

using Kind = WebSocketConnection::Kind;

struct CompanionHostTest : testing::Test {
    boost::asio::io_context io;
    WorkerPool workers{1};
    SystemClock clock;
    std::shared_ptr<test::FakeBackend> backend = std::make_shared<test::FakeBackend>();
    std::vector<PublishedService> published;
    test::TemporaryFolder folder;

    std::unique_ptr<CompanionHost> newHost(std::optional<std::string> password = std::nullopt,
                                           std::shared_ptr<NavDatabase> navDatabase = nullptr) {
        CompanionHost::Configuration configuration;
        configuration.recordingDirectory = folder.path() / "Recordings";
        configuration.instanceName = "rig42";
        configuration.simKind = "xplane";
        configuration.appVersion = "0.1";
        configuration.password = std::move(password);
        configuration.navDatabase = std::move(navDatabase);
        configuration.publish = [this](PublishedService service) {
            published.push_back(std::move(service));
            return nullptr;
        };
        configuration.onActivity = [this] { ++activities; };
        return std::make_unique<CompanionHost>(io.get_executor(), workers, clock, backend,
                                               std::move(configuration));
    }

    int activities = 0;

    void start(CompanionHost& host) { test::runTask(io, host.start()); }

    /// Runs until the backend has been told so; false when that does not happen.
    bool comesToBeWatched(bool expected) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        io.restart();
        while (backend->isWatched != expected && io.run_one_until(deadline) > 0) {
        }
        return backend->isWatched == expected;
    }
};

std::string pairingText(const PublishedService& service) { return service.txt.at(2).second; }

TEST_F(CompanionHostTest, AnEmptyPasswordLeavesPairingOpen) {
    const auto host = newHost("");
    start(*host);
    EXPECT_EQ(pairingText(published.at(0)), "open");
    EXPECT_TRUE(host->advertiser().advertisedPort());
    host->stop();
    EXPECT_FALSE(host->advertiser().advertisedPort());
}

TEST_F(CompanionHostTest, APasswordIsRequired) {
    const auto host = newHost("x");
    start(*host);
    EXPECT_EQ(pairingText(published.at(0)), "required");
    host->stop();
}

TEST_F(CompanionHostTest, StartingTwiceFailsAndLeavesTheFirst) {
    const auto host = newHost();
    start(*host);
    const auto port = host->advertiser().advertisedPort();
    try {
        start(*host);
        FAIL() << "started twice";
    } catch (const CompanionHostError& error) {
        EXPECT_STREQ(error.what(), "alreadyStarted");
    }
    EXPECT_EQ(host->advertiser().advertisedPort(), port);
    host->stop();
}

TEST_F(CompanionHostTest, StoppingAHostThatNeverStartedIsHarmless) {
    const auto host = newHost();
    host->stop();
    host->stop();
    EXPECT_FALSE(host->advertiser().advertisedPort());
}

Task<std::vector<std::string>> pairSubscribeAndListen(boost::asio::io_context& io, Clock& clock,
                                                      CompanionHost& host) {
    const Endpoint endpoint{"127.0.0.1", *host.advertiser().advertisedPort()};
    const auto client = openWebSocket(io.get_executor(), clock, endpoint, "/");
    client->send(R"({"type":"pair"})", Kind::awaited);
    client->send(R"({"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":[{"name":"a"}]}})",
                 Kind::awaited);
    std::vector<std::string> texts;
    for (int i = 0; i < 4; ++i) {
        auto message = co_await client->receive();
        if (!message) break;
        texts.push_back(std::move(message->content));
    }
    host.stop();
    const auto afterStop = co_await client->receive();
    EXPECT_FALSE(afterStop);
    co_return texts;
}

TEST_F(CompanionHostTest, AClientGetsAnswersAndPushesUntilTheHostStops) {
    backend->datarefs["a"] = 4.5;
    const auto host = newHost();
    start(*host);
    const auto texts = test::runTask(io, pairSubscribeAndListen(io, clock, *host));
    const std::string push = R"({"type":"dataref_subscribe_values","data":{"a":4.5}})";
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_THAT(texts[0], testing::HasSubstr("\"accepted\":true"));
    EXPECT_EQ(texts[1], R"({"type":"dataref_subscribe_values","req_id":1,"data":{"a":4.5}})");
    EXPECT_EQ(texts[2], push);
    EXPECT_EQ(texts[3], push);
}

TEST_F(CompanionHostTest, TheBackendHearsAtOnceThatSomebodyLooks) {
    const auto host = newHost();
    host->setStageWatched(true);
    EXPECT_TRUE(backend->isWatched);
    host->setStageWatched(false);
    EXPECT_FALSE(backend->isWatched);
}

TEST_F(CompanionHostTest, TheBackendIsWatchedWhileARecordingRuns) {
    const auto host = newHost();
    start(*host);
    host->recording().start();
    host->sampling().wake(); // as the client has, by whom it is started
    EXPECT_TRUE(comesToBeWatched(true));
    host->setStageWatched(false); // others' reasons stand
    EXPECT_TRUE(backend->isWatched);
    host->recording().stop();
    EXPECT_TRUE(comesToBeWatched(false));
    host->stop();
}

TEST_F(CompanionHostTest, TheBackendIsWatchedWhileAClientIsPaired) {
    const auto host = newHost();
    start(*host);
    const Endpoint endpoint{"127.0.0.1", *host->advertiser().advertisedPort()};
    const auto client = openWebSocket(io.get_executor(), clock, endpoint, "/");
    client->send(R"({"type":"pair"})", Kind::awaited);
    EXPECT_TRUE(comesToBeWatched(true));
    client->cancel();
    EXPECT_TRUE(comesToBeWatched(false));
    host->stop();
}

TEST_F(CompanionHostTest, WhatAPersonMayWantToBeToldOfIsToldOnce) {
    const auto host = newHost();
    start(*host);
    const auto comesTo = [&](int expected) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        io.restart();
        while (activities < expected && io.run_one_until(deadline) > 0) {
        }
        return activities == expected;
    };
    const Endpoint endpoint{"127.0.0.1", *host->advertiser().advertisedPort()};
    const auto client = openWebSocket(io.get_executor(), clock, endpoint, "/");
    client->send(R"({"type":"pair"})", Kind::awaited);
    EXPECT_TRUE(comesTo(1)) << "paired";
    host->recording().start();
    EXPECT_TRUE(comesTo(2)) << "recording";
    host->recording().stop();
    EXPECT_TRUE(comesTo(3)) << "no recording";
    client->cancel();
    EXPECT_TRUE(comesTo(4)) << "nobody";
    host->stop();
}

TEST_F(CompanionHostTest, StoppingEndsTheRecording) {
    const auto host = newHost();
    host->recording().start();
    host->stop();
    EXPECT_FALSE(host->recording().isRecording());
    EXPECT_EQ(host->recording().directory(), folder.path() / "Recordings");
}

} // namespace
} // namespace tarnly
