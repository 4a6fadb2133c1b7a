#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "Support/LoopbackListener.hpp"
#include "Support/RawPeer.hpp"
#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"

/// A connection whose messages go to a receiver, as the companion's do: real sockets, a peer that writes what
/// bytes it likes, and a clock that the test turns.
namespace tarnly {
namespace {

using namespace std::chrono_literals;
using test::finalClose;
using test::finalPing;
using test::finalText;
using test::RawPeer;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = WebSocketConnection::Kind;

const std::string answeringPong = "\x8A\x01p";

struct FakeReceiver final : WebSocketConnection::Receiver {
    /// What is done with a message; says whether the next one may come.
    std::function<bool(const std::string&)> take = [](const std::string&) { return true; };
    std::vector<std::string> taken;
    std::vector<WebSocketConnection::Message> kept;
    bool keeps = false;
    int ends = 0;

    bool onMessage(WebSocketConnection::Message message) override {
        taken.push_back(message.content);
        if (keeps) kept.push_back(std::move(message));
        return take(taken.back());
    }
    int hangUps = 0;

    void onHangUp() override { ++hangUps; }
    void onEnd() override { ++ends; }
};

std::string serverFrame(const std::string& text) {
    return {"\x81" + std::string(1, static_cast<char>(text.size())) + text};
}

struct WebSocketReceiverTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    WebSocketLimits limits;
    std::optional<test::LoopbackListener> listener;
    RawPeer peer{io};
    std::shared_ptr<FakeReceiver> receiver = std::make_shared<FakeReceiver>();
    std::shared_ptr<WebSocketConnection> connection;

    void connect() {
        listener.emplace(io, clock, limits);
        test::runTask(io, peer.upgrade(listener->endpoint()));
        connection = test::runTask(io, listener->accept());
        connection->setReceiver(receiver);
    }

    /// Answers each message with itself.
    void echo() {
        receiver->take = [this](const std::string& text) {
            connection->send(text, Kind::awaited);
            return true;
        };
    }

    /// Leaves every message unanswered.
    void beBusy() {
        receiver->take = [](const std::string&) { return false; };
    }

    void write(std::string bytes) { test::runTask(io, peer.write(std::move(bytes))); }
    std::string read(std::size_t size) { return test::runTask(io, peer.read(size)); }
    std::string readToTheEnd() { return test::runTask(io, peer.readUntilEnd()); }
    void until(const std::function<bool()>& condition) { ASSERT_TRUE(test::runUntil(io, condition)); }

    /// Lets the sockets do all that they can do now.
    void settle() {
        do {
            io.restart();
        } while (io.run_for(30ms) > 0);
    }

    std::size_t unread() { return peer.socket().available(); }
};

TEST_F(WebSocketReceiverTest, AMessageIsAnsweredWhereItIsRead) {
    echo();
    connect();
    write(RawPeer::frame(finalText, "hello"));
    EXPECT_EQ(read(7), serverFrame("hello"));
}

TEST_F(WebSocketReceiverTest, AnswersThatAreReadyTogetherLeaveInOneWrite) {
    echo();
    connect();
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, "2") + RawPeer::frame(finalPing, "p") +
          RawPeer::frame(finalText, "3"));
    until([this] { return unread() > 0; });
    std::string bytes(unread(), '\0');
    peer.socket().receive(boost::asio::buffer(bytes));
    EXPECT_EQ(bytes, answeringPong + serverFrame("1") + serverFrame("2") + serverFrame("3"));
}

TEST_F(WebSocketReceiverTest, APingBehindRequestsThatWaitIsAnsweredAtOnce) {
    beBusy();
    connect();
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, "2") + RawPeer::frame(finalText, "3") +
          RawPeer::frame(finalPing, "p"));
    EXPECT_EQ(read(3), answeringPong);
    EXPECT_THAT(receiver->taken, ElementsAre("1"));
    connection->resume();
    connection->resume();
    EXPECT_THAT(receiver->taken, ElementsAre("1", "2", "3"));
}

TEST_F(WebSocketReceiverTest, ReadingAheadHasItsBounds) {
    limits.readAheadMessages = 4;
    beBusy();
    connect();
    std::string bytes;
    for (const auto* text : {"1", "2", "3", "4", "5"})
        bytes += RawPeer::frame(finalText, text);
    write(bytes + RawPeer::frame(finalPing, "p"));
    settle();
    EXPECT_THAT(receiver->taken, ElementsAre("1"));
    EXPECT_EQ(unread(), 0U);
    connection->resume();
    EXPECT_EQ(read(3), answeringPong);
}

TEST_F(WebSocketReceiverTest, ReadingAheadCountsBytes) {
    limits.readAheadBytes = 100;
    beBusy();
    connect();
    const std::string text(60, 'x');
    write(RawPeer::frame(finalText, text) + RawPeer::frame(finalText, text) +
          RawPeer::frame(finalText, text) + RawPeer::frame(finalPing, "p"));
    settle();
    EXPECT_EQ(unread(), 0U);
    connection->resume();
    EXPECT_EQ(read(3), answeringPong);
}

TEST_F(WebSocketReceiverTest, ALongMessageWaitsForTheLimitThatTheAnswerBeforeBrings) {
    limits.message = 10;
    beBusy();
    connect();
    const std::string text(100, 'x');
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, text));
    settle();
    EXPECT_EQ(receiver->ends, 0);
    connection->setMessageLimit(100);
    connection->resume();
    until([this] { return receiver->taken.size() == 2; });
    EXPECT_EQ(receiver->taken.back(), text);
}

TEST_F(WebSocketReceiverTest, ALongMessageEndsTheConnectionWhenTheLimitStays) {
    limits.message = 10;
    beBusy();
    connect();
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, std::string(11, 'x')));
    settle();
    connection->resume();
    EXPECT_EQ(read(4), "\x88\x02\x03\xF1");
    clock.advance(io, 1s);
    until([this] { return receiver->ends == 1; });
}

TEST_F(WebSocketReceiverTest, ThePeersReadingOnIsASignOfLife) {
    connect();
    write(RawPeer::frame(finalText, "1"));
    until([this] { return !receiver->taken.empty(); });
    EXPECT_FALSE(connection->signsOfLife().lastTakenAt);
    connection->send(std::string(std::size_t{16} * 1024 * 1024, 'x'), Kind::awaited);
    clock.advance(io, 10s);
    EXPECT_EQ(connection->signsOfLife().lastTakenAt, clock.now()) << "something waits";
    read(std::size_t{16} * 1024 * 1024);
    settle();
    const auto taken = connection->signsOfLife().lastTakenAt;
    clock.advance(io, 10s);
    EXPECT_EQ(connection->signsOfLife().lastTakenAt, taken);
}

TEST_F(WebSocketReceiverTest, AConnectionThatIsCutEndsAtOnce) {
    connect();
    connection->abort();
    EXPECT_EQ(readToTheEnd(), "");
    until([this] { return receiver->ends == 1; });
    EXPECT_TRUE(connection->failure());
}

TEST_F(WebSocketReceiverTest, WhatWasAskedBeforeACloseIsAnsweredFirst) {
    beBusy();
    connect();
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, "2") +
          RawPeer::frame(finalClose, std::string("\x03\xE9", 2)));
    settle();
    EXPECT_EQ(receiver->ends, 0);
    echo();
    connection->send("answer", Kind::awaited);
    connection->resume();
    EXPECT_EQ(readToTheEnd(), serverFrame("answer") + serverFrame("2") + "\x88\x02\x03\xE9");
    until([this] { return receiver->ends == 1; });
    EXPECT_FALSE(connection->failure());
}

TEST_F(WebSocketReceiverTest, WhatWasAskedBeforeThePeerShutItsSideIsAnsweredFirst) {
    beBusy();
    connect();
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, "2"));
    peer.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send);
    settle();
    EXPECT_EQ(receiver->ends, 0);
    echo();
    connection->send("answer", Kind::awaited);
    connection->resume();
    const auto bytes = readToTheEnd();
    EXPECT_EQ(bytes.substr(0, 11), serverFrame("answer") + serverFrame("2"));
    until([this] { return receiver->ends == 1; });
    EXPECT_TRUE(connection->failure());
}

TEST_F(WebSocketReceiverTest, AConnectionThatBreaksHasEndedWhateverIsUnderWay) {
    beBusy();
    connect();
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, "2"));
    until([this] { return !receiver->taken.empty(); });
    peer.socket().set_option(boost::asio::socket_base::linger(true, 0));
    peer.socket().close();
    until([this] { return receiver->ends == 1; });
    EXPECT_TRUE(connection->failure());
    connection->resume();
    settle();
    EXPECT_THAT(receiver->taken, ElementsAre("1"));
    EXPECT_EQ(receiver->ends, 1);
}

TEST_F(WebSocketReceiverTest, AReceiverThatBreaksEndsTheConnection) {
    receiver->take = [](const std::string&) -> bool { throw std::bad_alloc(); };
    connect();
    write(RawPeer::frame(finalText, "1"));
    until([this] { return receiver->ends == 1; });
    ASSERT_TRUE(connection->failure());
    EXPECT_EQ(connection->failure()->which(), NetworkError::Case::connectionClosed);
}

TEST_F(WebSocketReceiverTest, AReceiverMayResumeBeforeItReturns) {
    receiver->take = [this](const std::string& text) {
        connection->send(text, Kind::awaited);
        connection->resume();
        return false;
    };
    connect();
    write(RawPeer::frame(finalText, "1"));
    EXPECT_EQ(read(3), serverFrame("1"));
    write(RawPeer::frame(finalText, "2"));
    EXPECT_EQ(read(3), serverFrame("2"));
}

TEST_F(WebSocketReceiverTest, NobodyAsksMoreOfAPeerThatLeavesItsAnswersUnread) {
    const std::string megabyte(1024 * 1024, 'x');
    receiver->take = [&](const std::string&) {
        connection->send(megabyte, Kind::awaited);
        return true;
    };
    connect();
    std::string questions;
    for (int i = 0; i < 64; ++i)
        questions += RawPeer::frame(finalText, "?");
    write(questions);
    settle();
    const auto before = receiver->taken.size();
    EXPECT_LT(before, 64U);
    constexpr std::size_t header = 10;
    read(64 * (header + megabyte.size()));
    EXPECT_THAT(receiver->taken, SizeIs(64));
}

TEST_F(WebSocketReceiverTest, AMessageInPartsIsFollowedByWhatWasSentMeanwhile) {
    connect();
    connection->sendPart("one", false);
    connection->send("push", Kind::unsolicited);
    EXPECT_EQ(connection->backlog(), 4U);
    connection->sendPart("two", false);
    connection->ping();
    connection->sendPart("three", true);
    EXPECT_EQ(read(25), std::string("\x01\x03one\0\x03two\x89\0\x80\x05three", 19) + "\x81\x04push");
    EXPECT_EQ(connection->backlog(), 0U);
}

TEST_F(WebSocketReceiverTest, APushAboveTheBacklogsLimitCutsNobodyWhoReads) {
    connect();
    const std::string push(limits.backlog + 1, 'x');
    for (int i = 0; i < 3; ++i) {
        connection->send(push, Kind::unsolicited);
        EXPECT_THAT(read(10 + push.size()), SizeIs(10 + push.size()));
    }
    EXPECT_FALSE(connection->failure());
}

TEST_F(WebSocketReceiverTest, ALongMessageWaitsUnreadForRoom) {
    ByteBudget budget(100'000);
    limits.budget = &budget;
    limits.shortMessage = 100;
    receiver->keeps = true;
    connect();
    auto room = budget.tryTake(60'000);
    const std::string text(50'000, 'x');
    std::string bytes =
        RawPeer::frame(finalText, "short") + std::string("\x81\xFE\xC3\x50\0\0\0\0", 8) + text;
    write(bytes);
    settle();
    EXPECT_THAT(receiver->taken, ElementsAre("short"));
    EXPECT_EQ(budget.waiting(), 1U);
    room.reset();
    until([this] { return receiver->taken.size() == 2; });
    EXPECT_EQ(receiver->taken.back(), text);
    EXPECT_EQ(budget.taken(), text.size());
    receiver->kept.clear();
    EXPECT_EQ(budget.taken(), 0U);
}

TEST_F(WebSocketReceiverTest, WhoHoldsRoomAndSendsNothingForFifteenSecondsIsCut) {
    ByteBudget budget(100'000);
    limits.budget = &budget;
    limits.shortMessage = 100;
    connect();
    write(std::string("\x81\xFE\xC3\x50\0\0\0\0", 8) + "the beginning");
    until([&] { return budget.taken() > 0; });
    settle();
    clock.advance(io, 14s);
    write("a little more");
    settle();
    clock.advance(io, 14s);
    EXPECT_FALSE(connection->failure());
    clock.advance(io, 1s);
    ASSERT_TRUE(connection->failure());
    EXPECT_EQ(connection->failure()->which(), NetworkError::Case::timedOut);
    EXPECT_EQ(budget.taken(), 0U);
}

TEST_F(WebSocketReceiverTest, WhoHoldsRoomAndDripsBytesIsCut) {
    ByteBudget budget(100'000);
    limits.budget = &budget;
    limits.shortMessage = 100;
    limits.leastBytesASecond = 1000;
    connect();
    write(std::string("\x81\xFE\xC3\x50\0\0\0\0", 8) + std::string(5000, 'x'));
    until([&] { return budget.taken() > 0; });
    for (int i = 0; i < 3; ++i) {
        settle();
        clock.advance(io, 10s);
        write("x");
    }
    settle();
    clock.advance(io, 4s);
    EXPECT_FALSE(connection->failure());
    clock.advance(io, 2s);
    EXPECT_TRUE(connection->failure());
    EXPECT_EQ(budget.taken(), 0U);
}

TEST_F(WebSocketReceiverTest, WhoHoldsRoomAndWaitsForMoreInVainIsCut) {
    ByteBudget budget(100'000);
    limits.budget = &budget;
    limits.shortMessage = 100;
    connect();
    const std::string part(40'000, 'x');
    write(std::string("\x01\xFE\x9C\x40\0\0\0\0", 8) + part);
    until([&] { return budget.taken() == part.size(); });
    const auto room = budget.tryTake(50'000);
    write(std::string("\x80\xFE\x9C\x40\0\0\0\0", 8) + part);
    until([&] { return budget.waiting() == 1; });
    clock.advance(io, 15s);
    ASSERT_TRUE(connection->failure());
    EXPECT_EQ(budget.taken(), 50'000U);
}

TEST_F(WebSocketReceiverTest, AnEndWithMessagesReadAheadIsWaitedForInPeace) {
    beBusy();
    connect();
    write(RawPeer::frame(finalText, "1") + RawPeer::frame(finalText, "2"));
    until([this] { return !receiver->taken.empty(); });
    connection->cancel();
    connection->resume();
    EXPECT_EQ(read(4), std::string("\x88\x02\x03\xE8", 4));
    io.restart();
    EXPECT_LT(io.run_for(50ms), 10U); // handlers: no busy loop
    write(RawPeer::frame(finalClose, std::string("\x03\xE8", 2)));
    until([this] { return receiver->ends == 1; });
    EXPECT_THAT(receiver->taken, ElementsAre("1"));
}

TEST_F(WebSocketReceiverTest, AMessageBehindAnAnswerThatHeldItUpIsReadOn) {
    limits.unsentAnswers = 10;
    limits.readAheadBytes = 100;
    echo();
    connect();
    const std::string text(60, 'x');
    std::string bytes;
    for (int i = 0; i < 20; ++i)
        bytes += RawPeer::frame(finalText, text);
    write(bytes);
    EXPECT_THAT(read(20 * 62), SizeIs(20 * 62));
}

TEST_F(WebSocketReceiverTest, ABreachIsToldAndNothingBehindItIsRead) {
    limits.message = 100;
    for (const auto& [bytes, code] :
         {std::pair(RawPeer::frame(0x83, "reserved opcode"), std::string("\x03\xEA")),
          std::pair(std::string("\x81\xFE\x10\0\0\0\0\0", 8), std::string("\x03\xF1"))}) {
        connect();
        write(bytes + RawPeer::frame(finalText, "behind"));
        EXPECT_EQ(read(4), "\x88\x02" + code);
        EXPECT_TRUE(connection->failure());
        EXPECT_EQ(receiver->ends, 0);
        clock.advance(io, limits.close);
        settle();
        EXPECT_EQ(receiver->ends, 1);
        EXPECT_THAT(receiver->taken, IsEmpty());
        peer.socket().close();
        receiver->ends = 0;
    }
}

TEST_F(WebSocketReceiverTest, APeerThatHangsUpDuringItsRequestIsTold) {
    beBusy();
    connect();
    write(RawPeer::frame(finalText, "question") + RawPeer::frame(finalClose, ""));
    until([this] { return receiver->taken.size() == 1; });
    settle();
    EXPECT_EQ(receiver->hangUps, 0) << "it may wait for our close";
    peer.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send);
    until([this] { return receiver->hangUps == 1; });
    EXPECT_EQ(receiver->ends, 0);
    connection->send("answer", Kind::awaited);
    connection->resume();
    EXPECT_EQ(read(8), serverFrame("answer"));
}

} // namespace
} // namespace tarnly
