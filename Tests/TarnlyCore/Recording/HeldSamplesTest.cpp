#include "TarnlyCore/Recording/HeldSamples.hpp"

#include <gmock/gmock.h>

#include <set>

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

Clock::TimePoint at(std::chrono::milliseconds time) { return Clock::TimePoint(1h + time); }

SampleObservation takenAt(std::chrono::milliseconds time, std::int64_t link = 1) {
    SampleObservation seen;
    seen.takenAt = at(time);
    seen.link = link;
    seen.sample.altitudeFt = static_cast<double>(time.count());
    return seen;
}

struct HeldSamplesTest : testing::Test {
    HeldSamples held;
    std::set<int> proven; // milliseconds

    /// The times of what is taken out at `now`, in milliseconds.
    std::vector<double> take(std::chrono::milliseconds now) {
        const auto isProven = [this](std::int64_t, Clock::TimePoint moment) {
            return proven.contains(static_cast<int>((moment - at(0ms)) / 1ms));
        };
        std::vector<double> times;
        for (const auto& seen : held.takeProven(isProven, at(now)))
            times.push_back(seen.sample.altitudeFt);
        return times;
    }
};

TEST_F(HeldSamplesTest, AProvenSampleIsTakenAtOnceAndOnce) {
    held.add(takenAt(500ms));
    proven = {500};
    EXPECT_THAT(take(500ms), ElementsAre(500));
    EXPECT_THAT(take(500ms), IsEmpty());
    EXPECT_EQ(held.size(), 0U);
}

TEST_F(HeldSamplesTest, WhatIsNotProvenWaitsAndComesInOrder) {
    held.add(takenAt(0ms));
    EXPECT_THAT(take(0ms), IsEmpty());
    held.add(takenAt(500ms));
    held.add(takenAt(1000ms));
    EXPECT_THAT(take(1000ms), IsEmpty());
    proven = {0, 500};
    EXPECT_THAT(take(1500ms), ElementsAre(0, 500));
    EXPECT_EQ(held.size(), 1U);
    proven = {0, 500, 1000};
    EXPECT_THAT(take(1500ms), ElementsAre(1000));
}

TEST_F(HeldSamplesTest, NothingWaitsForLongerThanThreeSeconds) {
    held.add(takenAt(0ms));
    held.add(takenAt(500ms));
    EXPECT_THAT(take(3000ms), IsEmpty());
    EXPECT_EQ(held.size(), 2U);
    proven = {0, 500};
    EXPECT_THAT(take(3001ms), ElementsAre(500)); // the proof of the other one comes too late
    EXPECT_EQ(held.size(), 0U);
}

TEST_F(HeldSamplesTest, AProofExactlyAfterThreeSecondsCounts) {
    held.add(takenAt(0ms));
    proven = {0};
    EXPECT_THAT(take(3000ms), ElementsAre(0));
}

TEST_F(HeldSamplesTest, WhatStandsBeforeAProvenSampleIsDropped) {
    held.add(takenAt(0ms));
    held.add(takenAt(500ms));
    held.add(takenAt(1000ms));
    proven = {500};
    EXPECT_THAT(take(1000ms), ElementsAre(500));
    EXPECT_EQ(held.size(), 1U);
    proven = {0, 500, 1000};
    EXPECT_THAT(take(1500ms), ElementsAre(1000));
}

TEST_F(HeldSamplesTest, ASampleOverAnotherLinkDropsThoseOfTheOld) {
    held.add(takenAt(0ms, 1));
    held.add(takenAt(500ms, 1));
    held.add(takenAt(1000ms, 2));
    EXPECT_EQ(held.size(), 1U);
    proven = {0, 500, 1000};
    EXPECT_THAT(take(1000ms), ElementsAre(1000));
}

TEST_F(HeldSamplesTest, EachIsAskedForByItsLinkAndTime) {
    held.add(takenAt(250ms, 7));
    std::vector<std::pair<std::int64_t, Clock::TimePoint>> asked;
    const auto isProven = [&](std::int64_t link, Clock::TimePoint moment) {
        asked.emplace_back(link, moment);
        return false;
    };
    EXPECT_THAT(held.takeProven(isProven, at(300ms)), IsEmpty());
    EXPECT_THAT(asked, ElementsAre(std::pair(std::int64_t{7}, at(250ms))));
}

TEST_F(HeldSamplesTest, ClearedItHoldsNothing) {
    held.add(takenAt(0ms));
    held.clear();
    proven = {0};
    EXPECT_THAT(take(0ms), IsEmpty());
}

} // namespace
} // namespace tarnly
