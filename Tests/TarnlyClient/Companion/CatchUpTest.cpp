#include "TarnlyClient/Companion/CatchUp.hpp"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tarnly::client {
namespace {

TrackSample sampleAt(double elapsed, double altitude = 1000) {
    TrackSample sample;
    sample.elapsedSeconds = elapsed;
    sample.altitudeFt = altitude;
    return sample;
}

FiredTriggerEvent firedAt(double elapsed, const std::string& id) { return {id, elapsed, "speak"}; }

template <typename T>
void append(std::vector<T>& all, const std::vector<T>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

/// The companion's side of `catch_up`.
struct Recording : RecordedFlight {
    RecordedFlight catchUp(std::optional<double> since) const {
        RecordedFlight result;
        const auto isAfter = [&](const auto& element) { return !since || element.elapsedSeconds > *since; };
        std::copy_if(samples.begin(), samples.end(), std::back_inserter(result.samples), isAfter);
        std::copy_if(fired.begin(), fired.end(), std::back_inserter(result.fired), isAfter);
        return result;
    }
};

/// A client that keeps all that it is told is new.
struct Follower {
    CatchUpCursor cursor;
    RecordedFlight gathered;
    int restarts = 0;

    void ask(const Recording& recording) {
        auto news = cursor.take(recording.catchUp(cursor.since()));
        if (!news) {
            ++restarts;
            gathered = {};
            news = cursor.take(recording.catchUp(cursor.since()));
        }
        ASSERT_TRUE(news) << "one question for everything is enough";
        append(gathered.samples, news->samples);
        append(gathered.fired, news->fired);
    }

    void expectHasAllOf(const Recording& recording) const {
        EXPECT_TRUE(gathered.samples == recording.samples);
        EXPECT_TRUE(gathered.fired == recording.fired);
    }
};

class CatchUpCursorTest : public testing::Test {
  public:
    Recording recording;
    Follower follower;

    void record(std::vector<TrackSample> samples, std::vector<FiredTriggerEvent> fired = {}) {
        append(recording.samples, samples);
        append(recording.fired, fired);
    }

    void askAndExpectAll(int restarts = 0) {
        follower.ask(recording);
        follower.expectHasAllOf(recording);
        EXPECT_EQ(follower.restarts, restarts);
    }
};

TEST_F(CatchUpCursorTest, AsksForEverythingAtFirst) { EXPECT_EQ(follower.cursor.since(), std::nullopt); }

TEST_F(CatchUpCursorTest, AnEmptyRecordingHasNoNews) {
    askAndExpectAll();
    askAndExpectAll();
}

TEST_F(CatchUpCursorTest, AsksForTheLastSampleOnceMore) {
    record({sampleAt(0.5), sampleAt(1)});
    askAndExpectAll();
    const auto answer = recording.catchUp(follower.cursor.since());
    EXPECT_EQ(answer.samples, std::vector{sampleAt(1)});
}

TEST_F(CatchUpCursorTest, EachThingIsNewOnce) {
    record({sampleAt(0.5)}, {firedAt(0.5, "a")});
    askAndExpectAll();
    record({sampleAt(1), sampleAt(1.5)}, {firedAt(1.5, "b"), firedAt(1.5, "c")});
    askAndExpectAll();
    askAndExpectAll();
    record({sampleAt(2)});
    askAndExpectAll();
}

TEST_F(CatchUpCursorTest, ATriggerThatIsRecordedAfterItsSampleWasSeenIsNotMissed) {
    record({sampleAt(0.5), sampleAt(1)}, {firedAt(1, "a")});
    askAndExpectAll();
    record({}, {firedAt(1, "b")});
    askAndExpectAll();
    record({sampleAt(1.5)});
    askAndExpectAll();
}

TEST_F(CatchUpCursorTest, ATriggerWithoutASampleIsNews) {
    record({}, {firedAt(3, "a")});
    askAndExpectAll();
    record({}, {firedAt(3, "b")});
    askAndExpectAll();
    record({sampleAt(1), sampleAt(2)}, {firedAt(4, "c")});
    askAndExpectAll();
    askAndExpectAll();
}

TEST_F(CatchUpCursorTest, ARecordingThatBeginsAnewIsNoticedWhenItsTimesAreLess) {
    record({sampleAt(10), sampleAt(11)}, {firedAt(11, "a")});
    askAndExpectAll();
    recording = {};
    record({sampleAt(0.5)}, {firedAt(0.5, "a")});
    askAndExpectAll(1);
}

TEST_F(CatchUpCursorTest, ARecordingThatBeginsAnewIsNoticedWhenItHasGoneFurther) {
    record({sampleAt(0.5), sampleAt(1)});
    askAndExpectAll();
    recording = {};
    record({sampleAt(0.4), sampleAt(0.9), sampleAt(1.4)}, {firedAt(0.9, "a")});
    askAndExpectAll(1);
}

TEST_F(CatchUpCursorTest, ARecordingThatBeginsAnewIsNoticedWhileItIsEmpty) {
    record({sampleAt(0.5)});
    askAndExpectAll();
    recording = {};
    askAndExpectAll(1);
    askAndExpectAll(1);
}

TEST_F(CatchUpCursorTest, TheSameTimeWithOtherValuesIsAnotherRecording) {
    record({sampleAt(0.5), sampleAt(1, 1000)});
    askAndExpectAll();
    recording = {};
    record({sampleAt(0.5), sampleAt(1, 1001)});
    askAndExpectAll(1);
}

TEST_F(CatchUpCursorTest, TheFirstSampleMayCarryTheTimeOfTheRecordingBefore) {
    record({sampleAt(3600)}, {firedAt(3600, "late")});
    askAndExpectAll();
    record({sampleAt(0.2)}, {firedAt(0.2, "a")});
    askAndExpectAll();
    record({sampleAt(0.7)}, {firedAt(0.7, "b")});
    askAndExpectAll();
}

/// A companion at work, in random steps: a sample, its triggers one by one, another recording.
class RandomCompanion {
  public:
    explicit RandomCompanion(unsigned seed) : random_(seed) {}

    const Recording& recording() const { return recording_; }

    void step() {
        switch (draw(12)) {
            case 0:
                restart();
                break;
            case 1:
            case 2:
            case 3:
            case 4:
                if (!recording_.samples.empty())
                    recording_.fired.push_back(firedAt(recording_.samples.back().elapsedSeconds, id()));
                break;
            default:
                // Two recordings never have a sample in common: their times are exact to a nanosecond.
                elapsed_ += 0.5 + draw(1'000'000) * 1e-9;
                recording_.samples.push_back(sampleAt(elapsed_, draw(2)));
        }
    }

    bool happensOnceIn(int times) { return draw(times) == 0; }

  private:
    void restart() {
        const bool hasSampleUnderWay = draw(2) == 0;
        recording_ = {};
        if (hasSampleUnderWay) recording_.samples.push_back(sampleAt(elapsed_ + 0.5));
        elapsed_ = 0;
    }

    int draw(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
    std::string id() { return std::to_string(++lastId_); }

    std::mt19937 random_;
    Recording recording_;
    double elapsed_ = 0;
    int lastId_ = 0;
};

TEST(CatchUpCursor, WhateverHappensAllIsGatheredOnce) {
    int restarts = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        RandomCompanion companion(seed);
        Follower follower;
        for (int i = 0; i < 100; ++i) {
            companion.step();
            if (!companion.happensOnceIn(3)) continue;
            follower.ask(companion.recording());
            follower.expectHasAllOf(companion.recording());
        }
        restarts += follower.restarts;
        if (testing::Test::HasFailure()) return;
    }
    EXPECT_GT(restarts, 300) << "the random steps restart recordings";
}

/// "s1.5" for a sample, an id for a trigger, in the order of the lines.
std::vector<std::string> order(const std::vector<double>& samples,
                               const std::vector<std::pair<std::string, double>>& fired) {
    RecordedFlight recorded;
    for (const double elapsed : samples) {
        TrackSample sample;
        sample.elapsedSeconds = elapsed;
        recorded.samples.push_back(sample);
    }
    for (const auto& [id, elapsed] : fired)
        recorded.fired.push_back({id, elapsed, "speak"});
    std::vector<std::string> result;
    for (const auto& line : linesInLogOrder(recorded)) {
        EXPECT_TRUE(line.isComplete());
        result.push_back(line.sample ? "s" + std::to_string(static_cast<int>(line.sample->elapsedSeconds))
                                     : line.fired->triggerId);
    }
    return result;
}

using Lines = std::vector<std::string>;

TEST(LinesInLogOrder, ATriggerFollowsItsSample) {
    EXPECT_EQ(order({1, 2, 3}, {{"a", 1}, {"b", 1}, {"c", 3}}), (Lines{"s1", "a", "b", "s2", "s3", "c"}));
}

TEST(LinesInLogOrder, ATriggerWhoseSampleIsNotThereComesBeforeALaterSample) {
    EXPECT_EQ(order({2}, {{"a", 1}, {"b", 2}, {"c", 3}}), (Lines{"a", "s2", "b", "c"}));
}

TEST(LinesInLogOrder, AFirstSampleOfALaterTimeKeepsItsTriggers) {
    EXPECT_EQ(order({9, 1, 2}, {{"a", 9}, {"b", 1}}), (Lines{"s9", "a", "s1", "b", "s2"}));
}

TEST(LinesInLogOrder, NothingIsNothing) {
    EXPECT_EQ(order({}, {}), Lines{});
    EXPECT_EQ(order({1}, {}), Lines{"s1"});
    EXPECT_EQ(order({}, {{"a", 1}}), Lines{"a"});
}

} // namespace
} // namespace tarnly::client
