#include <gtest/gtest.h>

#include "TarnlyXPlane/DatarefReading.hpp"
#include "TarnlyXPlane/Link/LinkFixture.hpp"

namespace tarnly {
namespace {

using namespace test;

/// When a link that is up asks for what it knows by name once more.
class CatalogueRefreshTest : public LinkFixture {
  protected:
    using Id = std::optional<std::int64_t>;

    Id datarefId(const std::string& name) { return run(findId(link, link->datarefs(), name)); }

    std::shared_ptr<Waiting> beginToFind(const std::string& name) {
        return begin(findId(link, link->datarefs(), name));
    }
};

TEST_F(CatalogueRefreshTest, YoungCatalogueKnowsWhatThereIs) {
    connect();
    transport->datarefs.emplace("sim/late", 14);
    advance(4999ms);
    EXPECT_EQ(datarefId("sim/late"), std::nullopt);
    EXPECT_EQ(datarefCatalogues(), 1);
}

TEST_F(CatalogueRefreshTest, CatalogueOfFiveSecondsIsLoadedAgainForANameThatItLacks) {
    connect();
    transport->datarefs.emplace("sim/late", 14);
    advance(5s);
    EXPECT_EQ(datarefId("sim/late"), 14);
    EXPECT_EQ(datarefCatalogues(), 2);
    EXPECT_EQ(commandCatalogues(), 1);
}

TEST_F(CatalogueRefreshTest, NameThatItHasNeedsNoOther) {
    connect();
    advance(1h);
    EXPECT_EQ(datarefId("sim/x"), 12);
    EXPECT_EQ(datarefCatalogues(), 1);
}

TEST_F(CatalogueRefreshTest, NameThatThereIsNotLoadsItEveryFiveSecondsAtMost) {
    connect();
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(datarefId("sim/none"), std::nullopt);
        advance(100ms);
    }
    EXPECT_EQ(datarefCatalogues(), 4);
}

TEST_F(CatalogueRefreshTest, CommandsAreTreatedAlike) {
    connect();
    transport->commands.emplace("sim/late", 819);
    advance(4999ms);
    EXPECT_EQ(run(findId(link, link->commands(), "sim/late")), std::nullopt);
    advance(1ms);
    EXPECT_EQ(run(findId(link, link->commands(), "sim/late")), 819);
    EXPECT_EQ(datarefCatalogues(), 1);
    EXPECT_EQ(commandCatalogues(), 2);
}

TEST_F(CatalogueRefreshTest, ChangedIdsCountFromThenOn) {
    connect();
    transport->datarefs = {{"sim/x", 99}, {"sim/late", 14}};
    advance(5s);
    EXPECT_EQ(datarefId("sim/late"), 14);
    EXPECT_EQ(datarefId("sim/x"), 99);
}

TEST_F(CatalogueRefreshTest, WhoeverNeedsOneWaitsForTheSame) {
    connect();
    transport->datarefs.emplace("sim/late", 14);
    advance(5s);
    transport->latency = 100ms;
    const auto first = beginToFind("sim/late");
    const auto second = beginToFind("sim/none");
    advance(50ms);
    const auto third = beginToFind("sim/late");
    advance(49ms);
    EXPECT_FALSE(first->isDone || second->isDone || third->isDone);
    advance(1ms);
    EXPECT_TRUE(first->hasSucceeded() && second->hasSucceeded() && third->hasSucceeded());
    EXPECT_EQ(datarefCatalogues(), 2);
}

TEST_F(CatalogueRefreshTest, FailureIsSharedAndTheNextTriesAgain) {
    connect();
    advance(5s);
    answers["/api/v2/datarefs"] = httpResponse(500, "");
    transport->latency = 100ms;
    const auto first = beginToFind("sim/late");
    const auto second = beginToFind("sim/late");
    advance(100ms);
    EXPECT_TRUE(first->hasFailedWith<LinkFailure>());
    EXPECT_TRUE(second->hasFailedWith<LinkFailure>());
    EXPECT_EQ(datarefCatalogues(), 2);
    EXPECT_EQ(datarefId("sim/x"), 12) << "what was known is kept";
    answers.erase("/api/v2/datarefs");
    transport->datarefs.emplace("sim/late", 14);
    EXPECT_EQ(datarefId("sim/late"), 14);
}

TEST_F(CatalogueRefreshTest, EmptyOneIsWaitedForUntilItIsAQuarterOfASecondOld) {
    transport->datarefs.clear();
    connect();
    const auto waiting = beginToFind("sim/x");
    transport->datarefs = {{"sim/x", 12}};
    advance(249ms);
    EXPECT_FALSE(waiting->isDone);
    EXPECT_EQ(datarefCatalogues(), 1);
    advance(1ms);
    EXPECT_TRUE(waiting->hasSucceeded());
    EXPECT_EQ(datarefCatalogues(), 2);
    EXPECT_EQ(datarefId("sim/x"), 12);
}

TEST_F(CatalogueRefreshTest, EmptyOneThatIsOldEnoughIsAskedForAtOnce) {
    transport->datarefs.clear();
    connect();
    advance(250ms);
    transport->datarefs = {{"sim/x", 12}};
    const auto waiting = beginToFind("sim/x");
    EXPECT_TRUE(waiting->hasSucceeded());
}

TEST_F(CatalogueRefreshTest, ManyWhoAskAtTheMainMenuShareOneLoad) {
    transport->datarefs.clear();
    connect();
    std::vector<std::shared_ptr<Waiting>> all;
    for (int i = 0; i < 50; ++i)
        all.push_back(beginToFind("sim/x"));
    advance(250ms);
    for (const auto& each : all)
        EXPECT_TRUE(each->hasSucceeded());
    EXPECT_EQ(datarefCatalogues(), 2);
}

TEST_F(CatalogueRefreshTest, FlightThatHasGoneEndsTheLinkAndWhoWaits) {
    connect();
    advance(5s);
    transport->datarefs.clear();
    const auto waiting = beginToFind("sim/late");
    EXPECT_TRUE(waiting->hasFailedWith<LinkEnded>());
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(CatalogueRefreshTest, RefusalEndsTheLinkAndWhoWaits) {
    connect();
    advance(5s);
    answers["/api/v2/datarefs"] = httpResponse(403, "");
    const auto waiting = beginToFind("sim/late");
    EXPECT_TRUE(waiting->hasFailedWith<LinkEnded>());
    EXPECT_TRUE(link->hasEnded());
}

TEST_F(CatalogueRefreshTest, ClosingEndsWhoWaits) {
    connect();
    advance(5s);
    transport->latency = 1s;
    const auto waiting = beginToFind("sim/late");
    link->close();
    VirtualClock::settle(io);
    EXPECT_TRUE(waiting->hasFailedWith<LinkEnded>());
}

TEST_F(CatalogueRefreshTest, ClosingEndsWhoWaitsForAnEmptyOne) {
    transport->datarefs.clear();
    connect();
    const auto waiting = beginToFind("sim/late");
    link->close();
    advance(250ms);
    EXPECT_TRUE(waiting->hasFailedWith<LinkEnded>());
    EXPECT_EQ(datarefCatalogues(), 1);
}

TEST_F(CatalogueRefreshTest, WhatTheSimulatorRefusesAmongSeveralIsAskedForSingly) {
    connect();
    run(link->subscribe({12, 13, 14}));
    ASSERT_EQ(sent().size(), 1U);
    EXPECT_EQ(sentDatarefs(0), parseJson(R"([{"id":12},{"id":13},{"id":14}])"));
    webSocket().deliver(R"({"req_id":1,"type":"result","success":false})");
    VirtualClock::settle(io);
    ASSERT_EQ(sent().size(), 4U);
    for (std::size_t i = 1; i <= 3; ++i) {
        EXPECT_EQ(sent()[i].at("type"), "dataref_subscribe_values");
        EXPECT_EQ(sent()[i].at("req_id"), i + 1);
    }
    EXPECT_EQ(sentDatarefs(1), parseJson(R"([{"id":12}])"));
    EXPECT_EQ(sentDatarefs(3), parseJson(R"([{"id":14}])"));
    webSocket().deliver(R"({"req_id":3,"type":"result","success":false})");
    VirtualClock::settle(io);
    EXPECT_EQ(sent().size(), 4U);
    run(link->subscribe({12, 13, 14}));
    EXPECT_EQ(sent().size(), 4U);
}

TEST_F(CatalogueRefreshTest, IdThatTheSimulatorDoesNotKnowHasItAskedForItsCataloguesAgain) {
    connect();
    transport->datarefs = {{"sim/x", 99}};
    transport->commands = {{"sim/c", 900}};
    run(link->subscribe({12}));
    webSocket().deliver(R"({"req_id":1,"type":"result","success":false})");
    advance(4999ms);
    EXPECT_EQ(datarefCatalogues(), 1);
    advance(1ms);
    EXPECT_EQ(datarefId("sim/x"), 99);
    EXPECT_EQ(run(findId(link, link->commands(), "sim/c")), 900);
    EXPECT_EQ(datarefCatalogues(), 2);
    EXPECT_EQ(commandCatalogues(), 2);
}

TEST_F(CatalogueRefreshTest, IdsThatTheSimulatorDoesNotKnowHaveThemAskedForOnce) {
    connect();
    run(link->subscribe({12, 13}));
    for (int reqId = 1; reqId <= 3; ++reqId) {
        webSocket().deliver(R"({"req_id":)" + std::to_string(reqId) + R"(,"type":"result","success":false})");
        VirtualClock::settle(io);
    }
    advance(1h);
    EXPECT_EQ(datarefCatalogues(), 2);
    EXPECT_EQ(commandCatalogues(), 2);
}

TEST_F(CatalogueRefreshTest, WriteThatTheSimulatorRefusesSaysNothingOfTheIds) {
    connect();
    std::vector<DatarefEntry> entries(1);
    entries.front().id = 12;
    run(link->send(WebApiType::setValues, std::move(entries)));
    webSocket().deliver(R"({"req_id":1,"type":"result","success":false})");
    advance(1h);
    EXPECT_EQ(datarefCatalogues(), 1);
}

TEST_F(CatalogueRefreshTest, ThousandsOfDatarefsAreSubscribedInFewMessages) {
    connect();
    std::vector<std::int64_t> ids;
    for (std::int64_t id = 1; id <= 2500; ++id)
        ids.push_back(id);
    run(link->subscribe(ids));
    ASSERT_EQ(sent().size(), 3U);
    EXPECT_EQ(sentDatarefs(0).as_array().size(), 1000U);
    EXPECT_EQ(sentDatarefs(2).as_array().size(), 500U);
}

} // namespace
} // namespace tarnly
