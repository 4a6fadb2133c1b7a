#include "TarnlyXPlane/Link/Liveness.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using namespace std::chrono_literals;

class LivenessTest : public testing::Test {
  protected:
    /// Seen from the link's beginning.
    Clock::Duration nextChange(Clock::Duration now) const { return liveness.nextChange(begin + now) - begin; }

    bool isProven(Clock::Duration moment) const { return liveness.isProven(begin + moment); }

    const Clock::TimePoint begin{1h};
    Liveness liveness{begin};
};

TEST_F(LivenessTest, IsAskedFiveSecondsAfterTheLastByte) {
    EXPECT_FALSE(liveness.isToBeAsked(begin + 4999ms));
    EXPECT_TRUE(liveness.isToBeAsked(begin + 5s));
    liveness.noteByte(begin + 2s);
    EXPECT_FALSE(liveness.isToBeAsked(begin + 6999ms));
    EXPECT_TRUE(liveness.isToBeAsked(begin + 7s));
}

TEST_F(LivenessTest, IsAskedAgainWhenTheAnswerHasNotComeInThreeSeconds) {
    liveness.noteAsked(begin + 5s);
    EXPECT_FALSE(liveness.isToBeAsked(begin + 5s));
    EXPECT_FALSE(liveness.isToBeAsked(begin + 7999ms));
    EXPECT_TRUE(liveness.isToBeAsked(begin + 8s));
}

TEST_F(LivenessTest, QuestionThatWasAnsweredDoesNotPutOffTheNext) {
    liveness.noteAsked(begin + 5s);
    liveness.noteByte(begin + 5001ms);
    EXPECT_FALSE(liveness.isToBeAsked(begin + 10s));
    EXPECT_TRUE(liveness.isToBeAsked(begin + 10001ms));
}

TEST_F(LivenessTest, IsSilentThreeSecondsAfterTheQuestionAndReplacedFifteenAfterTheLastByte) {
    EXPECT_FALSE(liveness.isSilent(begin + 7999ms));
    EXPECT_TRUE(liveness.isSilent(begin + 8s));
    EXPECT_FALSE(liveness.isToBeReplaced(begin + 14999ms));
    EXPECT_TRUE(liveness.isToBeReplaced(begin + 15s));
}

TEST_F(LivenessTest, AByteEndsTheSilence) {
    liveness.noteByte(begin + 9s);
    EXPECT_EQ(liveness.lastSign(), begin + 9s);
    EXPECT_FALSE(liveness.isSilent(begin + 16999ms));
    EXPECT_TRUE(liveness.isSilent(begin + 17s));
    EXPECT_FALSE(liveness.isToBeReplaced(begin + 23999ms));
    EXPECT_TRUE(liveness.isToBeReplaced(begin + 24s));
}

TEST_F(LivenessTest, OlderNewsDoNotTurnTheTimeBack) {
    liveness.noteByte(begin + 9s);
    liveness.noteByte(begin + 3s);
    liveness.noteResponse(begin + 8s);
    liveness.noteResponse(begin + 4s);
    EXPECT_EQ(liveness.lastSign(), begin + 9s);
}

TEST_F(LivenessTest, WhereNoPingWasEverAnsweredAResponseIsASign) {
    liveness.noteResponse(begin + 6s);
    EXPECT_EQ(liveness.lastSign(), begin + 6s);
    EXPECT_FALSE(liveness.isSilent(begin + 13999ms));
    EXPECT_TRUE(liveness.isSilent(begin + 14s));
    EXPECT_FALSE(liveness.isToBeReplaced(begin + 20999ms));
    EXPECT_TRUE(liveness.isToBeReplaced(begin + 21s));
}

TEST_F(LivenessTest, WherePingsWereAnsweredResponsesAreNone) {
    EXPECT_FALSE(liveness.answersPings());
    liveness.noteByte(begin + 1s);
    liveness.notePong();
    EXPECT_TRUE(liveness.answersPings());
    liveness.noteResponse(begin + 10s);
    EXPECT_EQ(liveness.lastSign(), begin + 1s);
    EXPECT_TRUE(liveness.isSilent(begin + 9s));
    EXPECT_TRUE(liveness.isToBeReplaced(begin + 16s));
}

TEST_F(LivenessTest, TellsTheNextMomentThatMatters) {
    EXPECT_EQ(nextChange(0s), 5s);
    EXPECT_EQ(nextChange(4999ms), 5s);
    liveness.noteAsked(begin + 5s);
    EXPECT_EQ(nextChange(5s), 8s);
    liveness.noteAsked(begin + 8s);
    EXPECT_EQ(nextChange(8s), 11s);
    liveness.noteAsked(begin + 11s);
    EXPECT_EQ(nextChange(11s), 14s);
    liveness.noteAsked(begin + 14s);
    EXPECT_EQ(nextChange(14s), 15s);
    liveness.noteByte(begin + 14500ms);
    EXPECT_EQ(nextChange(14500ms), 19500ms);
}

TEST_F(LivenessTest, LimitsAreThoseThatWereGiven) {
    Liveness::Limits limits;
    limits.askAfter = 100ms;
    limits.answerWithin = 50ms;
    limits.replaceAfter = 1s;
    const Liveness hasty(begin, limits);
    EXPECT_TRUE(hasty.isToBeAsked(begin + 100ms));
    EXPECT_FALSE(hasty.isSilent(begin + 149ms));
    EXPECT_TRUE(hasty.isSilent(begin + 150ms));
    EXPECT_FALSE(hasty.isToBeReplaced(begin + 999ms));
    EXPECT_TRUE(hasty.isToBeReplaced(begin + 1s));
}

TEST_F(LivenessTest, NothingIsProvenAtFirst) {
    EXPECT_FALSE(isProven(0s));
    liveness.noteByte(begin + 1s);
    liveness.noteResponse(begin + 1s);
    liveness.notePong();
    EXPECT_FALSE(isProven(1s)) << "whoever answers may have stopped flying";
}

TEST_F(LivenessTest, ValuesProveTwoTenthsOfASecondBeforeAndThreeAfter) {
    liveness.noteValues(begin + 10s);
    EXPECT_EQ(liveness.lastValues(), begin + 10s);
    EXPECT_FALSE(isProven(9799ms));
    EXPECT_TRUE(isProven(9800ms));
    EXPECT_TRUE(isProven(10s));
    EXPECT_TRUE(isProven(10300ms));
    EXPECT_FALSE(isProven(10301ms));
}

TEST_F(LivenessTest, ValuesWithAPauseBetweenLeaveItUnproven) {
    liveness.noteValues(begin + 10s);
    liveness.noteValues(begin + 11s);
    EXPECT_TRUE(isProven(10300ms));
    EXPECT_FALSE(isProven(10301ms));
    EXPECT_FALSE(isProven(10799ms));
    EXPECT_TRUE(isProven(10800ms));
}

TEST_F(LivenessTest, ValuesInARowProveAllOfTheirTime) {
    for (auto when = 1s + 0ms; when <= 60s; when += 100ms)
        liveness.noteValues(begin + when);
    for (auto moment = 800ms; moment <= 60300ms; moment += 50ms)
        ASSERT_TRUE(isProven(moment)) << moment.count();
    EXPECT_FALSE(isProven(60301ms));
}

TEST_F(LivenessTest, PromptAnswerProvesFromShortlyBeforeTheQuestion) {
    liveness.noteStandstill(begin + 10s, begin + 11s);
    EXPECT_FALSE(isProven(9699ms));
    EXPECT_TRUE(isProven(9700ms));
    EXPECT_TRUE(isProven(11s));
    EXPECT_FALSE(isProven(11001ms));
}

TEST_F(LivenessTest, LateAnswerProvesOnlyTheHalfSecondBeforeIt) {
    liveness.noteStandstill(begin + 10s, begin + 11001ms);
    EXPECT_FALSE(isProven(10s)) << "it may have stood still in between";
    EXPECT_FALSE(isProven(10500ms));
    EXPECT_TRUE(isProven(10501ms));
    EXPECT_TRUE(isProven(11001ms));
    EXPECT_FALSE(isProven(11002ms));
}

TEST_F(LivenessTest, ProofsOfEitherKindStandTogether) {
    liveness.noteValues(begin + 10s);
    liveness.noteStandstill(begin + 10500ms, begin + 10600ms);
    liveness.noteStandstill(begin + 12s, begin + 12100ms);
    EXPECT_TRUE(isProven(9800ms));
    EXPECT_TRUE(isProven(10250ms));
    EXPECT_TRUE(isProven(10600ms));
    EXPECT_FALSE(isProven(11s));
    EXPECT_TRUE(isProven(12s));
}

TEST_F(LivenessTest, ProofsAreForgottenWhenNobodyCanWantThemAnyMore) {
    liveness.noteValues(begin + 10s);
    liveness.noteValues(begin + 20s);
    EXPECT_TRUE(isProven(10s)) << "ten seconds later it still counts";
    liveness.noteValues(begin + 20501ms);
    EXPECT_FALSE(isProven(10s));
    EXPECT_TRUE(isProven(20s));
}

} // namespace
} // namespace tarnly
