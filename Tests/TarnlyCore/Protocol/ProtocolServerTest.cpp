#include "TarnlyCore/Protocol/ProtocolServer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/detached.hpp>
#include <future>

#include "Support/FakeBackend.hpp"
#include "Support/FakeConnection.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using MessageKind = WebSocketConnection::Kind;

struct ProtocolServerTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    WorkerPool workers{1};
    std::shared_ptr<test::FakeBackend> backend = std::make_shared<test::FakeBackend>();
    std::shared_ptr<PairingManager> pairing = std::make_shared<PairingManager>(std::nullopt);
    test::TemporaryFolder folder;
    std::shared_ptr<FlightRecorder> recording = std::make_shared<FlightRecorder>(folder.path(), clock);
    std::shared_ptr<LoadedScript> loadedScript = std::make_shared<LoadedScript>();
    std::vector<std::shared_ptr<ProtocolSession>> sessions;
    std::shared_ptr<PairingGuard> guard = std::make_shared<PairingGuard>(io.get_executor(), clock);
    std::shared_ptr<Allowance> names = std::make_shared<Allowance>(ProtocolLimits::namesInAll);
    std::chrono::sys_seconds wallTime{std::chrono::seconds(1'795'317'300)};
    std::shared_ptr<ProtocolServer> server = std::make_shared<ProtocolServer>(
        io.get_executor(), clock,
        [this](const PeerNetwork& peer) {
            const auto findNone = [](const auto&) {
                return [](const std::string&) { return std::optional<Coordinate>(); };
            };
            ProtocolSession::Services services{pairing,  guard, backend, recording, loadedScript,
                                               findNone, names, workers, workers};
            sessions.push_back(std::make_shared<ProtocolSession>(std::move(services), peer));
            return sessions.back();
        },
        [this] { return wallTime; });

    std::shared_ptr<test::FakeConnection> connect() {
        auto connection = std::make_shared<test::FakeConnection>(io.get_executor());
        server->accept(connection);
        settle();
        return connection;
    }

    std::shared_ptr<test::FakeConnection> connectPaired() {
        auto connection = connect();
        connection->deliver(R"({"type":"pair"})");
        settle();
        connection->sent.clear();
        return connection;
    }

    /// Subscribes the youngest session to a dataref.
    void subscribe(const std::string& name) { sessions.back()->addSubscriptions({name}); }

    void broadcast() {
        server->broadcast([](const auto& session) { return session->buildSubscriptionPush(); });
        settle();
    }

    void settle() { clock.settle(io); }
};

TEST_F(ProtocolServerTest, AnswersEachTextMessage) {
    const auto connection = connectPaired();
    connection->deliver(R"({"type":"sim_info","req_id":1})");
    connection->deliver(R"({"type":"x","req_id":2})");
    settle();
    EXPECT_THAT(connection->texts(MessageKind::awaited),
                ElementsAre(HasSubstr("\"req_id\":1"), HasSubstr("\"req_id\":2")));
}

TEST_F(ProtocolServerTest, BinaryMessagesAreDroppedWithoutAnAnswer) {
    const auto connection = connectPaired();
    connection->deliverBinary();
    connection->deliver(R"({"type":"sim_info"})");
    settle();
    EXPECT_THAT(connection->texts(MessageKind::awaited), SizeIs(1));
    EXPECT_FALSE(connection->isCancelled);
}

TEST_F(ProtocolServerTest, AnAbsentAnswerClosesThatConnectionAlone) {
    const auto stranger = connect();
    const auto other = connectPaired();
    stranger->deliver(R"({"type":"sim_info"})");
    settle();
    EXPECT_TRUE(stranger->isCancelled);
    EXPECT_THAT(stranger->sent, IsEmpty());
    EXPECT_EQ(server->connectionCount(), 1U);
    other->deliver(R"({"type":"sim_info"})");
    settle();
    EXPECT_THAT(other->texts(MessageKind::awaited), SizeIs(1));
}

TEST_F(ProtocolServerTest, AConnectionThatEndsLeavesTheTable) {
    const auto connection = connectPaired();
    EXPECT_EQ(server->connectionCount(), 1U);
    connection->close();
    settle();
    EXPECT_EQ(server->connectionCount(), 0U);
    subscribe("a");
    broadcast();
    EXPECT_THAT(connection->sent, IsEmpty());
}

TEST_F(ProtocolServerTest, CountsThePaired) {
    const auto stranger = connect();
    EXPECT_EQ(server->pairedCount(), 0U);
    const auto first = connectPaired();
    const auto second = connectPaired();
    EXPECT_EQ(server->pairedCount(), 2U);
    first->close();
    settle();
    EXPECT_EQ(server->pairedCount(), 1U);
    EXPECT_EQ(server->connectionCount(), 2U);
}

TEST_F(ProtocolServerTest, TheNextRequestWaitsForTheAnswerToTheLast) {
    backend->clock = &clock;
    const auto connection = connectPaired();
    connection->deliver(
        R"({"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":[{"name":"missing"}]}})");
    connection->deliver(R"({"type":"sim_info","req_id":2})");
    settle();
    EXPECT_THAT(connection->sent, IsEmpty());
    EXPECT_EQ(connection->waitingMessages(), 1U);
    clock.advance(io, std::chrono::seconds(1));
    EXPECT_THAT(connection->texts(MessageKind::awaited),
                ElementsAre(HasSubstr("\"req_id\":1"), HasSubstr("\"req_id\":2")));
}

TEST_F(ProtocolServerTest, TheScriptOfAConnectionThatBreaksDoesNotComeIntoForce) {
    const auto connection = connectPaired();
    std::promise<void> release;
    auto wait = [released = release.get_future().share()] { released.wait(); };
    boost::asio::co_spawn(io, workers.run(std::move(wait)), boost::asio::detached);
    connection->deliver(R"({"type":"load_script","params":{"triggers":[]}})");
    settle();
    connection->close();
    settle();
    release.set_value();
    io.restart();
    io.run();
    EXPECT_FALSE(loadedScript->current());
}

TEST_F(ProtocolServerTest, AConnectionThatBreaksIsGoneWhileItsRequestRuns) {
    backend->clock = &clock;
    const auto connection = connectPaired();
    connection->deliver(R"({"type":"dataref_subscribe_values","params":{"datarefs":[{"name":"missing"}]}})");
    settle();
    connection->close();
    settle();
    EXPECT_EQ(clock.sleeping(), 1U); // the request goes on
    EXPECT_EQ(server->connectionCount(), 0U);
    EXPECT_EQ(server->pairedCount(), 0U);
    clock.advance(io, std::chrono::seconds(1));
    EXPECT_THAT(connection->sent, IsEmpty());
}

TEST_F(ProtocolServerTest, ASlowRequestHoldsNobodyElse) {
    backend->clock = &clock;
    const auto slow = connectPaired();
    const auto quick = connectPaired();
    slow->deliver(R"({"type":"dataref_subscribe_values","params":{"datarefs":[{"name":"missing"}]}})");
    quick->deliver(R"({"type":"sim_info"})");
    settle();
    EXPECT_THAT(slow->sent, IsEmpty());
    EXPECT_THAT(quick->sent, SizeIs(1));
    clock.advance(io, std::chrono::seconds(1));
    EXPECT_THAT(slow->texts(MessageKind::awaited), ElementsAre(HasSubstr("timeout")));
}

TEST_F(ProtocolServerTest, AStrangersMessagesAreLimitedUntilItPairs) {
    const auto connection = connect();
    EXPECT_EQ(connection->messageLimit, 64U * 1024);
    connection->deliver(R"({"type":"pair"})");
    settle();
    EXPECT_GE(connection->messageLimit, 24U * 1024 * 1024);
}

TEST_F(ProtocolServerTest, BroadcastReachesPairedSessionsOnly) {
    backend->datarefs["a"] = 1;
    const auto stranger = connect();
    subscribe("a");
    const auto paired = connectPaired();
    subscribe("a");
    const auto idle = connectPaired();
    broadcast();
    EXPECT_THAT(stranger->sent, IsEmpty());
    EXPECT_THAT(paired->texts(MessageKind::unsolicited),
                ElementsAre(R"({"type":"dataref_subscribe_values","data":{"a":1}})"));
    EXPECT_THAT(idle->sent, IsEmpty());
}

TEST_F(ProtocolServerTest, BroadcastToNobodyDoesNothing) {
    broadcast();
    EXPECT_EQ(server->connectionCount(), 0U);
}

TEST_F(ProtocolServerTest, AFailingBuildCostsThatSessionItsMessageAlone) {
    backend->datarefs["a"] = 1;
    const auto failing = connectPaired();
    subscribe("missing");
    const auto other = connectPaired();
    subscribe("a");
    broadcast();
    EXPECT_THAT(failing->sent, IsEmpty());
    EXPECT_THAT(other->sent, SizeIs(1));
    backend->datarefs["missing"] = 2;
    broadcast();
    EXPECT_THAT(failing->sent, SizeIs(1));
}

TEST_F(ProtocolServerTest, ASessionThatWaitsDelaysNobodyAndHasOneMessageUnderWay) {
    backend->clock = &clock;
    backend->datarefs["a"] = 1;
    const auto waiting = connectPaired();
    subscribe("missing");
    const auto other = connectPaired();
    subscribe("a");
    broadcast();
    broadcast();
    EXPECT_THAT(other->sent, SizeIs(2));
    EXPECT_EQ(clock.sleeping(), 2U); // the push that waits, and the look for clients that have gone
    EXPECT_EQ(backend->count("getDataref missing"), 1);
    backend->datarefs["missing"] = 2;
    clock.advance(io, std::chrono::seconds(1));
    EXPECT_THAT(waiting->sent, SizeIs(1));
    broadcast();
    EXPECT_THAT(waiting->sent, SizeIs(2));
}

TEST_F(ProtocolServerTest, APeerThatIsBehindIsPassedOverUntilItHasCaughtUp) {
    backend->datarefs["a"] = 1;
    const auto behind = connectPaired();
    subscribe("a");
    behind->backlogBytes = 1024 * 1024;
    broadcast();
    EXPECT_THAT(behind->sent, IsEmpty());
    behind->backlogBytes = 0;
    broadcast();
    EXPECT_THAT(behind->sent, SizeIs(1));
}

TEST_F(ProtocolServerTest, CancelAllEndsEveryConnection) {
    const auto first = connectPaired();
    const auto second = connect();
    server->cancelAll();
    settle();
    EXPECT_TRUE(first->isCancelled);
    EXPECT_TRUE(second->isCancelled);
    EXPECT_EQ(server->connectionCount(), 0U);
}

TEST_F(ProtocolServerTest, AnExceptionEndsThatConnectionAlone) {
    const auto breaking = connectPaired();
    const auto other = connectPaired();
    breaking->breaks = true;
    breaking->deliver("");
    settle();
    EXPECT_TRUE(breaking->isCancelled);
    EXPECT_EQ(server->connectionCount(), 1U);
    other->deliver(R"({"type":"sim_info"})");
    settle();
    EXPECT_THAT(other->sent, SizeIs(1));
}

TEST_F(ProtocolServerTest, AClientThatSaysNothingIsAskedAndThenGone) {
    const auto connection = connectPaired();
    clock.advance(io, std::chrono::seconds(20));
    connection->signs.lastByteAt = clock.now();
    clock.advance(io, std::chrono::milliseconds(29'900));
    EXPECT_EQ(connection->pings, 0);
    clock.advance(io, std::chrono::seconds(2));
    EXPECT_EQ(connection->pings, 1);
    clock.advance(io, std::chrono::milliseconds(57'900));
    EXPECT_EQ(connection->pings, 1);
    EXPECT_EQ(server->connectionCount(), 1U);
    clock.advance(io, std::chrono::seconds(2));
    EXPECT_TRUE(connection->isAborted);
    EXPECT_EQ(server->connectionCount(), 0U);
}

TEST_F(ProtocolServerTest, AClientThatAnswersIsAskedAgainAndAgain) {
    const auto connection = connectPaired();
    for (int i = 1; i <= 5; ++i) {
        clock.advance(io, std::chrono::seconds(31));
        EXPECT_EQ(connection->pings, i);
        connection->signs.lastByteAt = clock.now();
    }
    EXPECT_FALSE(connection->isAborted);
}

TEST_F(ProtocolServerTest, AClientThatReadsWhatItWasSentIsNotAskedMeanwhile) {
    const auto connection = connectPaired();
    for (int i = 0; i < 20; ++i) {
        connection->signs.lastTakenAt = clock.now();
        clock.advance(io, std::chrono::seconds(10));
    }
    EXPECT_EQ(connection->pings, 0);
    EXPECT_FALSE(connection->isAborted);
}

TEST_F(ProtocolServerTest, ClientsAreWatchedAgainAfterTheLastOneHasGone) {
    connectPaired()->close();
    clock.advance(io, std::chrono::seconds(100));
    const auto connection = connectPaired();
    clock.advance(io, std::chrono::seconds(31));
    EXPECT_EQ(connection->pings, 1);
}

TEST_F(ProtocolServerTest, PairingEndsTheTimeOfProbation) {
    Admission admission(io.get_executor(), clock, {});
    const auto connectStranger = [&] {
        auto connection = std::make_shared<test::FakeConnection>(io.get_executor());
        connection->stay = admission.admit(PeerNetwork(), [weak = std::weak_ptr(connection)] {
            if (const auto present = weak.lock()) present->abort();
        });
        server->accept(connection);
        settle();
        return connection;
    };
    const auto stranger = connectStranger();
    const auto client = connectStranger();
    client->deliver(R"({"type":"pair"})");
    clock.advance(io, std::chrono::seconds(31));
    EXPECT_TRUE(stranger->isAborted);
    EXPECT_FALSE(client->isAborted);
}

TEST_F(ProtocolServerTest, TheTimeThatALateAnswerTakesDoesNotCount) {
    pairing->setPassword("Secret");
    Admission admission(io.get_executor(), clock, {});
    const auto connection = std::make_shared<test::FakeConnection>(io.get_executor());
    connection->stay = admission.admit(PeerNetwork(), [weak = std::weak_ptr(connection)] {
        if (const auto present = weak.lock()) present->abort();
    });
    server->accept(connection);
    settle();
    for (int i = 0; i < 12; ++i)
        connection->deliver(R"({"type":"pair"})"); // the last seven wait for 1, 2, 4, 8, 8, 8 and 8 seconds
    clock.advance(io, std::chrono::milliseconds(38'900));
    EXPECT_THAT(connection->sent, SizeIs(11));
    clock.advance(io, std::chrono::milliseconds(200));
    EXPECT_THAT(connection->sent, SizeIs(12));
    connection->deliver(R"({"type":"pair","params":{"password":"Secret"}})");
    clock.advance(io, std::chrono::seconds(9));
    EXPECT_FALSE(connection->isAborted);
    EXPECT_EQ(server->pairedCount(), 1U);
    clock.advance(io, std::chrono::seconds(25));
    EXPECT_FALSE(connection->isAborted);
}

TEST_F(ProtocolServerTest, TellsWhoIsPairedAndSinceWhen) {
    Admission admission(io.get_executor(), clock, {});
    const auto connectFrom = [&](const char* address) {
        auto connection = std::make_shared<test::FakeConnection>(io.get_executor());
        connection->stay = admission.admit(PeerNetwork(boost::asio::ip::make_address(address)), [] {});
        server->accept(connection);
        settle();
        return connection;
    };
    const auto first = connectFrom("192.168.1.30");
    const auto second = connectFrom("fd42::31");
    connectFrom("192.168.1.32");
    EXPECT_THAT(server->pairedClients(), IsEmpty());
    const auto secondPairedAt = wallTime;
    second->deliver(R"({"type":"pair"})");
    settle();
    wallTime += std::chrono::seconds(5);
    first->deliver(R"({"type":"pair"})");
    second->deliver(R"({"type":"pair"})"); // again
    settle();
    sessions.at(1)->addSubscriptions({"a", "b"});
    const auto paired = server->pairedClients();
    ASSERT_THAT(paired, SizeIs(2));
    EXPECT_EQ(paired[0].address, "192.168.1.30");
    EXPECT_EQ(paired[0].since, wallTime);
    EXPECT_EQ(paired[0].subscriptions, 0U);
    EXPECT_EQ(paired[1].address, "fd42::");
    EXPECT_EQ(paired[1].since, secondPairedAt);
    EXPECT_EQ(paired[1].subscriptions, 2U);
}

TEST_F(ProtocolServerTest, ADisconnectedClientIsGoneWithoutAWordAndMayComeBack) {
    const auto first = connectPaired();
    const auto second = connectPaired();
    const auto ids = server->pairedClients();
    ASSERT_THAT(ids, SizeIs(2));
    EXPECT_TRUE(server->disconnect(ids[0].id));
    settle();
    EXPECT_TRUE(first->isAborted);
    EXPECT_THAT(first->sent, IsEmpty());
    EXPECT_FALSE(second->isAborted);
    EXPECT_EQ(server->connectionCount(), 1U);
    EXPECT_FALSE(server->disconnect(ids[0].id)) << "nobody else gets its id";
    connectPaired();
    EXPECT_FALSE(server->disconnect(ids[0].id));
    EXPECT_EQ(server->pairedCount(), 2U);
}

TEST_F(ProtocolServerTest, WhoHangsUpWhileItWaitsIsForgotten) {
    pairing->setPassword("Secret");
    for (int i = 0; i < 8; ++i)
        guard->note(PeerNetwork(), false);
    const auto gone = connect();
    const auto next = connect();
    for (const auto& connection : {gone, next})
        connection->deliver(R"({"type":"pair","params":{"password":"Secret"}})");
    settle();
    gone->hangUp();
    settle();
    EXPECT_TRUE(gone->isCancelled);
    EXPECT_THAT(gone->sent, IsEmpty());
    clock.advance(io, std::chrono::seconds(8));
    EXPECT_THAT(next->sent, SizeIs(1));
    EXPECT_EQ(server->pairedCount(), 1U);
}

TEST_F(ProtocolServerTest, AnAttemptThatWaitsMeetsThePasswordOfItsTurn) {
    pairing->setPassword("old");
    for (int i = 0; i < 5; ++i)
        guard->note(PeerNetwork(), false);
    const auto connection = connect();
    connection->deliver(R"({"type":"pair","params":{"password":"old"}})");
    settle();
    pairing->setPassword("new");
    clock.advance(io, std::chrono::seconds(1));
    EXPECT_EQ(server->pairedCount(), 0U);
    connection->deliver(R"({"type":"pair","params":{"password":"new"}})");
    clock.advance(io, std::chrono::seconds(2));
    EXPECT_EQ(server->pairedCount(), 1U);
}

TEST_F(ProtocolServerTest, WhoAsksWhileTooManyWaitIsClosed) {
    pairing->setPassword("Secret");
    for (int i = 0; i < 5; ++i)
        connect()->deliver(R"({"type":"pair"})");
    settle();
    std::vector<std::shared_ptr<test::FakeConnection>> waiting;
    for (std::size_t i = 0; i < PairingGuard::mostWaiting; ++i) {
        waiting.push_back(connect());
        waiting.back()->deliver(R"({"type":"pair"})");
        settle();
        EXPECT_THAT(waiting.back()->sent, IsEmpty());
        EXPECT_FALSE(waiting.back()->isCancelled);
    }
    const auto tooMany = connect();
    tooMany->deliver(R"({"type":"pair","params":{"password":"Secret"}})");
    settle();
    EXPECT_TRUE(tooMany->isCancelled);
    waiting[7]->close();
    settle();
    const auto next = connect();
    next->deliver(R"({"type":"pair","params":{"password":"Secret"}})");
    settle();
    EXPECT_FALSE(next->isCancelled);
    next->signs.lastByteAt = clock.now() + std::chrono::minutes(3); // it answers pings
    clock.advance(io, std::chrono::minutes(3));
    EXPECT_THAT(next->sent, SizeIs(1));
    EXPECT_EQ(server->pairedCount(), 1U);
}

TEST_F(ProtocolServerTest, JoiningWaitsUntilAllConnectionsHaveEnded) {
    connectPaired();
    server->cancelAll();
    EXPECT_EQ(server->connectionCount(), 1U);
    EXPECT_TRUE(clock.run(io, server->join(std::chrono::seconds(1))));
    EXPECT_EQ(server->connectionCount(), 0U);
}

TEST_F(ProtocolServerTest, JoiningGivesUpOnARequestThatTakesTooLong) {
    backend->clock = &clock;
    const auto connection = connectPaired();
    connection->deliver(R"({"type":"dataref_subscribe_values","params":{"datarefs":[{"name":"missing"}]}})");
    settle();
    server->cancelAll();
    const auto begin = clock.now();
    EXPECT_FALSE(clock.run(io, server->join(std::chrono::milliseconds(300))));
    EXPECT_EQ(clock.now() - begin, std::chrono::milliseconds(300));
}

TEST_F(ProtocolServerTest, ASessionEndsWithItsConnection) {
    const auto connection = connectPaired();
    const std::weak_ptr<ProtocolSession> session = sessions.back();
    sessions.clear();
    EXPECT_FALSE(session.expired());
    connection->close();
    settle();
    EXPECT_TRUE(session.expired());
}

} // namespace
} // namespace tarnly
