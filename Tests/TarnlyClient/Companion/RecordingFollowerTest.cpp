#include "TarnlyClient/Companion/RecordingFollower.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Support/RunTask.hpp"
#include "TarnlyClient/Companion/RecordingCompanion.hpp"

namespace tarnly::client {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::StartsWith;

using Lines = std::vector<std::string>;

/// Follows a companion with short pauses.
class RecordingFollowerTest : public testing::Test {
  public:
    RecordingFollowerTest() {
        options.session.timeout = std::chrono::seconds(30);
        options.interval = milliseconds(1);
        options.pause = GrowingPause(milliseconds(1), milliseconds(4));
    }

    test::RecordingCompanion companion;
    RecordingFollower::Options options;
    Lines shown;
    Lines remarks;
    /// What a test does when so many lines have been shown.
    std::function<void(std::size_t shown)> afterLine = [](std::size_t) {};
    /// What a listener has asked for beside.
    std::function<void()> begunAnew;
    std::function<void(bool)> connected;

    /// Follows until `shownAtEnd` lines were shown.
    void follow(std::size_t shownAtEnd) {
        SystemClock clock;
        boost::asio::io_context io;
        std::optional<RecordingFollower> follower;
        RecordingFollower::Listener listener;
        listener.recorded = [&](const LogLine& line) {
            shown.push_back(line.sample ? "at " + std::to_string(line.sample->elapsedSeconds).substr(0, 1)
                                        : line.fired->triggerId);
            afterLine(shown.size());
            if (shown.size() == shownAtEnd) follower->end();
        };
        listener.remark = [&](const std::string& text) { remarks.push_back(text); };
        listener.begunAnew = begunAnew;
        listener.connected = connected;
        follower.emplace(io.get_executor(), clock, Endpoint{"127.0.0.1", companion.port()}, options,
                         listener);
        test::runTask(io, follower->run());
        follower->end();
        io.run();
    }

    std::string failure() {
        try {
            follow(1);
            return "";
        } catch (const ClientError& error) {
            return error.what();
        }
    }
};

TEST_F(RecordingFollowerTest, ShowsWhatIsThereAndWhatComes) {
    companion.record(1, {"a", "b"});
    afterLine = [&](std::size_t count) {
        if (count == 3) companion.record(2);
        if (count == 4) companion.record(3, {"c"});
    };
    follow(6);
    EXPECT_THAT(shown, ElementsAre("at 1", "a", "b", "at 2", "at 3", "c"));
    EXPECT_THAT(remarks, ElementsAre());
}

TEST_F(RecordingFollowerTest, ALostConnectionLeavesNoGapAndNoDuplicate) {
    companion.record(1, {"a"});
    afterLine = [&](std::size_t count) {
        if (count != 2 && count != 5) return;
        companion.hangUps = 3;
        companion.record(double(count), {"x"});
        companion.record(double(count) + 1);
    };
    follow(8);
    EXPECT_THAT(shown, ElementsAre("at 1", "a", "at 2", "x", "at 3", "at 5", "x", "at 6"));
    const auto* loss = "the companion has ended the connection; trying again";
    EXPECT_THAT(remarks, ElementsAre(loss, "the companion is back", loss, "the companion is back"));
}

TEST_F(RecordingFollowerTest, ARecordingThatBeginsAnewIsShownFromItsBeginning) {
    companion.record(1);
    companion.record(2, {"a"});
    afterLine = [&](std::size_t count) {
        if (count != 3) return;
        companion.startAnew();
        companion.record(1, {"a"});
        companion.record(3);
    };
    follow(6);
    EXPECT_THAT(shown, ElementsAre("at 1", "at 2", "a", "at 1", "a", "at 3"));
    EXPECT_THAT(remarks, ElementsAre("the recording has begun anew"));
}

TEST_F(RecordingFollowerTest, AListenerMayWantToKnowOfTheOtherRecordingBeforeItsLines) {
    companion.record(1);
    companion.record(2);
    begunAnew = [&] { shown.push_back("anew"); };
    afterLine = [&](std::size_t count) {
        if (count != 2) return;
        companion.startAnew();
        companion.record(5);
    };
    follow(4);
    EXPECT_THAT(shown, ElementsAre("at 1", "at 2", "anew", "at 5"));
    EXPECT_THAT(remarks, ElementsAre());
}

TEST_F(RecordingFollowerTest, AListenerMayWantToKnowOfTheConnection) {
    companion.record(1);
    connected = [&](bool isConnected) { shown.push_back(isConnected ? "back" : "lost"); };
    afterLine = [&](std::size_t count) {
        if (count != 1) return;
        companion.hangUps = 3;
        companion.record(2);
    };
    follow(4);
    EXPECT_THAT(shown, ElementsAre("at 1", "lost", "back", "at 2"));
}

TEST_F(RecordingFollowerTest, ACompanionThatHasMovedIsFollowed) {
    test::RecordingCompanion moved;
    options.locate = [&] { return Endpoint{"127.0.0.1", moved.port()}; };
    companion.record(1, {"a"});
    afterLine = [&](std::size_t count) {
        if (count != 2) return;
        companion.hangUps = 1'000'000;
        moved.record(1, {"b"});
    };
    follow(4);
    EXPECT_THAT(shown, ElementsAre("at 1", "a", "at 1", "b"));
}

TEST_F(RecordingFollowerTest, ACompanionThatIsNotFoundAgainIsTriedWhereItWas) {
    std::atomic<int> searches = 0;
    options.locate = [&]() -> Endpoint {
        ++searches;
        throw ClientError("no companion found");
    };
    companion.record(1);
    afterLine = [&](std::size_t count) {
        if (count != 1) return;
        companion.hangUps = 2;
        companion.record(2);
    };
    follow(2);
    EXPECT_THAT(shown, ElementsAre("at 1", "at 2"));
    EXPECT_EQ(searches, 2);
}

TEST_F(RecordingFollowerTest, EndsAfterSoManyTriggers) {
    companion.record(1, {"a"});
    companion.record(2, {"b", "c"});
    companion.record(3, {"d"});
    options.count = 2;
    follow(0);
    EXPECT_THAT(shown, ElementsAre("at 1", "a", "at 2", "b"));
}

TEST_F(RecordingFollowerTest, EndsWhenItsTimeIsOver) {
    options.time = milliseconds(20);
    follow(0);
    EXPECT_THAT(shown, ElementsAre());
    EXPECT_GE(companion.requests(), 2U) << "it has paired and asked";
}

TEST_F(RecordingFollowerTest, WithoutAFirstAnswerThereIsNothingToFollow) {
    companion.hangUps = 1;
    EXPECT_EQ(failure(), "the companion has ended the connection");
    companion.hangUps = 0;
    companion.isOpen = false;
    EXPECT_THAT(failure(), StartsWith("the companion refuses to pair: no"));
}

TEST_F(RecordingFollowerTest, ARefusalAfterALossEndsIt) {
    companion.record(1);
    afterLine = [&](std::size_t) {
        companion.isOpen = false;
        companion.hangUps = 1;
    };
    try {
        follow(2);
        FAIL();
    } catch (const ClientError& error) {
        EXPECT_THAT(error.what(), StartsWith("the companion refuses to pair: no"));
    }
}

TEST(GrowingPause, DoublesUpToItsLimitAndBeginsAnew) {
    GrowingPause pause(milliseconds(500), milliseconds(5'000));
    for (const int expected : {500, 1'000, 2'000, 4'000, 5'000, 5'000})
        EXPECT_EQ(pause.next(), milliseconds(expected));
    pause.reset();
    EXPECT_EQ(pause.next(), milliseconds(500));
    EXPECT_EQ(pause.next(), milliseconds(1'000));
}

} // namespace
} // namespace tarnly::client
