#include "TarnlyPlatform/Net/Admission.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <map>
#include <string>
#include <vector>

#include "Support/VirtualClock.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

struct AdmissionTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    AdmissionLimits limits{3, 2, 5, 4, 30s};
    int strangersGone = 0;
    std::vector<std::string> sentAway;
    std::map<std::string, std::shared_ptr<Visit>> peers;
    std::unique_ptr<Admission> admission;

    /// Of a peer "a1" the address ends in the number of "a".
    void come(const std::string& name) {
        if (!admission) {
            admission =
                std::make_unique<Admission>(io.get_executor(), clock, limits, [this] { ++strangersGone; });
        }
        const auto address = name.starts_with("l") ? "127.0.0.1" : "10.0.0." + std::to_string(name.front());
        peers[name] = admission->admit(PeerNetwork(boost::asio::ip::make_address(address)), [this, name] {
            sentAway.push_back(name);
            peers.erase(name);
        });
        clock.advance(io, 1ms);
    }

    void comeAsFriend(const std::string& name) {
        come(name);
        peers.at(name)->trust();
    }
};

TEST_F(AdmissionTest, TheOldestStrangerGoesForTheNewcomer) {
    for (const char* name : {"a1", "b1", "c1", "d1", "e1"})
        come(name);
    EXPECT_THAT(sentAway, ElementsAre("a1", "b1"));
    EXPECT_EQ(admission->peerCount(), 3U);
    EXPECT_EQ(strangersGone, 2);
}

TEST_F(AdmissionTest, WhoHasEarnedTrustStays) {
    comeAsFriend("a1");
    for (const char* name : {"b1", "c1", "d1", "e1"})
        come(name);
    EXPECT_THAT(sentAway, ElementsAre("b1"));
}

TEST_F(AdmissionTest, OneNetworkHasFewerStrangers) {
    come("a1");
    come("b1");
    come("b2");
    come("b3");
    EXPECT_THAT(sentAway, ElementsAre("b1"));
}

TEST_F(AdmissionTest, ThisComputerIsNoNetwork) {
    limits = {100, 2, 100, 4, 30s};
    for (const char* name : {"l1", "l2", "l3", "l4", "l5", "l6"})
        come(name);
    EXPECT_THAT(sentAway, IsEmpty());
    for (const auto& [name, visit] : peers)
        EXPECT_TRUE(visit->hasRoom());
}

TEST_F(AdmissionTest, WhereAllHaveEarnedTrustThereIsNoRoom) {
    for (const char* name : {"a1", "b1", "c1", "d1", "e1"})
        comeAsFriend(name);
    come("f1");
    EXPECT_FALSE(peers.at("f1")->hasRoom());
    come("g1"); // in the place of the first one that waits
    EXPECT_THAT(sentAway, ElementsAre("f1"));
    EXPECT_FALSE(peers.at("g1")->hasRoom());
    peers.erase("a1");
    EXPECT_TRUE(peers.at("g1")->hasRoom());
}

TEST_F(AdmissionTest, AStrangerGoesBeforeThereIsNoRoom) {
    for (const char* name : {"a1", "b1", "c1", "d1"})
        comeAsFriend(name);
    come("e1");
    come("f1");
    EXPECT_THAT(sentAway, ElementsAre("e1"));
    EXPECT_TRUE(peers.at("f1")->hasRoom());
}

TEST_F(AdmissionTest, OneNetworkHasSoManyPeers) {
    for (const char* name : {"a1", "a2", "a3", "a4"})
        comeAsFriend(name);
    come("a5");
    EXPECT_FALSE(peers.at("a5")->hasRoom());
    come("b1");
    EXPECT_TRUE(peers.at("b1")->hasRoom());
    EXPECT_THAT(sentAway, ElementsAre("a5"));
}

TEST_F(AdmissionTest, WhoRemainsAStrangerIsSentAway) {
    come("a1");
    clock.advance(io, 20s);
    come("b1");
    comeAsFriend("c1");
    clock.advance(io, 9s);
    EXPECT_THAT(sentAway, IsEmpty());
    clock.advance(io, 1s);
    EXPECT_THAT(sentAway, ElementsAre("a1"));
    clock.advance(io, 100s);
    EXPECT_THAT(sentAway, ElementsAre("a1", "b1"));
}

TEST_F(AdmissionTest, ProbationStandsStillWhileThePeerWaits) {
    come("a1");
    come("b1");
    clock.advance(io, 20s);
    peers.at("a1")->pauseProbation();
    peers.at("a1")->pauseProbation();
    clock.advance(io, 50s);
    EXPECT_THAT(sentAway, ElementsAre("b1"));
    peers.at("a1")->resumeProbation();
    clock.advance(io, 9s);
    EXPECT_THAT(sentAway, ElementsAre("b1"));
    clock.advance(io, 2s);
    EXPECT_THAT(sentAway, ElementsAre("b1", "a1"));
}

TEST_F(AdmissionTest, ProbationThatGoesOnMayEndBeforeAnothersDoes) {
    come("a1");
    clock.advance(io, 28s);
    peers.at("a1")->pauseProbation();
    come("b1");
    peers.at("a1")->resumeProbation();
    clock.advance(io, 3s);
    EXPECT_THAT(sentAway, ElementsAre("a1"));
}

TEST_F(AdmissionTest, AVisitMayOutliveTheAdmission) {
    come("a1");
    admission.reset();
    peers.at("a1")->trust();
    peers.clear();
    EXPECT_EQ(strangersGone, 0);
}

} // namespace
} // namespace tarnly
