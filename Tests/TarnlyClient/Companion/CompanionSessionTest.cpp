#include "TarnlyClient/Companion/CompanionSession.hpp"

#include <gtest/gtest.h>

#include "Support/LoopbackListener.hpp"
#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"

namespace tarnly::client {
namespace {

using Kind = WebSocketConnection::Kind;

class CompanionSessionTest : public testing::Test {
  public:
    boost::asio::io_context io;
    SystemClock clock;
    test::LoopbackListener listener{io, clock};
    CompanionSession session{io.get_executor(), clock, listener.openClient(), {{}, std::chrono::seconds(60)}};
    std::shared_ptr<WebSocketConnection> companion = test::runTask(io, listener.accept());

    void say(const std::string& text) { companion->send(text, Kind::awaited); }

    std::string hear() {
        const auto message = test::runTask(io, companion->receive());
        return message ? message->content : "";
    }

    boost::json::value ask() { return test::runTask(io, session.request(MessageType::simInfo)); }
    std::optional<Values> push() { return test::runTask(io, session.nextPush()); }

    /// The text of the error that asking ends with.
    std::string refusal() {
        try {
            ask();
            return "";
        } catch (const ClientError& error) {
            return error.what();
        }
    }
};

TEST_F(CompanionSessionTest, AReplyIsKnownByItsId) {
    say(R"({"type":"sim_info","req_id":2,"data":"other"})");
    say(R"({"type":"sim_info","data":"none"})");
    say(R"({"type":"sim_info","req_id":1,"data":"mine"})");
    EXPECT_EQ(ask(), boost::json::value("mine"));
    EXPECT_EQ(hear(), R"({"type":"sim_info","req_id":1})");
    say(R"({"type":"sim_info","req_id":2,"data":"mine again"})");
    EXPECT_EQ(ask(), boost::json::value("mine again"));
}

TEST_F(CompanionSessionTest, PushesThatComeBetweenAreKeptInOrder) {
    say(R"({"type":"dataref_subscribe_values","data":{"a":1}})");
    say(R"({"type":"dataref_subscribe_values","data":{"a":2}})");
    say(R"({"type":"sim_info","req_id":1,"data":{}})");
    say(R"({"type":"dataref_subscribe_values","data":{"a":3}})");
    ask();
    EXPECT_EQ(push(), (Values{{"a", 1}}));
    EXPECT_EQ(push(), (Values{{"a", 2}}));
    EXPECT_EQ(push(), (Values{{"a", 3}}));
}

TEST_F(CompanionSessionTest, AReplyIsNoPush) {
    say(R"({"type":"dataref_subscribe_values","req_id":5,"data":{"a":1}})");
    say(R"({"type":"error","data":{"message":"failed to encode response"}})");
    say(R"({"type":"dataref_subscribe_values","data":{"a":2}})");
    EXPECT_EQ(push(), (Values{{"a", 2}}));
}

TEST_F(CompanionSessionTest, AnErrorWithoutIdIsTheAnswerToTheRequestUnderWay) {
    say(R"({"type":"error","req_id":9,"data":{"message":"another's"}})");
    say(R"({"type":"error","data":{"message":"malformed message"}})");
    EXPECT_EQ(refusal(), "malformed message");
}

TEST_F(CompanionSessionTest, AnErrorWithoutMessageIsShownWhole) {
    say(R"({"type":"error","req_id":1})");
    EXPECT_EQ(refusal(), R"({"type":"error","req_id":1})");
}

TEST_F(CompanionSessionTest, WhatIsNoMessageIsRefused) {
    say("[1]");
    EXPECT_EQ(refusal().rfind("the companion sent a message that is not understood: ", 0), 0U);
}

TEST_F(CompanionSessionTest, AnEndOfTheConnectionIsTold) {
    companion->cancel();
    EXPECT_EQ(refusal(), "the companion has ended the connection");
    EXPECT_THROW(push(), ClientError);
}

TEST_F(CompanionSessionTest, AClosedSessionHasNoPushesAndNoAnswers) {
    session.close();
    EXPECT_EQ(push(), std::nullopt);
    EXPECT_THROW(ask(), SessionClosed);
}

TEST_F(CompanionSessionTest, APairingThatIsNotUnderstoodIsRefused) {
    say(R"({"type":"pair","req_id":1,"data":{"accepted":"yes"}})");
    EXPECT_THROW(test::runTask(io, session.pair()), ClientError);
}

TEST(CompanionSessionDeadline, ASilentCompanionIsGivenUp) {
    boost::asio::io_context io;
    SystemClock realTime;
    test::VirtualClock clock;
    test::LoopbackListener listener(io, realTime);
    CompanionSession session(io.get_executor(), clock, listener.openClient(), {{}, std::chrono::seconds(5)});
    const auto silent = test::runTask(io, listener.accept());
    std::exception_ptr failure;
    auto asking = session.request(MessageType::simInfo);
    boost::asio::co_spawn(io, std::move(asking),
                          [&](const std::exception_ptr& error, const auto&) { failure = error; });
    clock.advance(io, std::chrono::milliseconds(4'999));
    EXPECT_FALSE(failure);
    clock.advance(io, std::chrono::milliseconds(1));
    test::runTask(io, silent->receive());
    while (!failure && io.run_one_for(std::chrono::seconds(60)) > 0) {
        // until the connection has been closed
    }
    ASSERT_TRUE(failure);
    try {
        std::rethrow_exception(failure);
    } catch (const ClientError& error) {
        EXPECT_STREQ(error.what(), "the companion did not answer in time");
    }
}

} // namespace
} // namespace tarnly::client
