#include "TarnlyClient/Lesson/LessonFlight.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TarnlyClient/Lesson/Flying.hpp"

namespace tarnly::client {
namespace {

using test::fired;
using test::sample;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> ids(const std::vector<const ScriptTrigger*>& triggers) {
    std::vector<std::string> result;
    for (const auto* trigger : triggers)
        result.push_back(trigger->id);
    return result;
}

TEST(LessonFlightTest, TheTriggerThatEndsItEndsIt) {
    LessonFlight flight(test::script(), "final");
    flight.take(sample(0));
    flight.take(fired("welcome", 0));
    EXPECT_FALSE(flight.isOver());
    EXPECT_THAT(ids(flight.waiting()), ElementsAre("final", "around"));
    flight.take(sample(0.5, 0, 480));
    flight.take(fired("final", 0.5));
    EXPECT_TRUE(flight.isOver());
    EXPECT_THAT(ids(flight.waiting()), ElementsAre("around"));
    EXPECT_EQ(flight.fired().size(), 2U);
    EXPECT_EQ(flight.lastSample()->aglFt, 480);
}

TEST(LessonFlightTest, WithoutSuchATriggerNothingEndsIt) {
    LessonFlight flight(test::script(), std::nullopt);
    for (const auto* id : {"welcome", "final", "around"})
        flight.take(fired(id, 1));
    EXPECT_FALSE(flight.isOver());
    EXPECT_THAT(flight.waiting(), IsEmpty());
}

TEST(LessonFlightTest, AnotherRecordingIsAnotherPartAndCostsNothing) {
    LessonFlight flight(test::script(), std::nullopt);
    flight.beginAnew();
    EXPECT_EQ(flight.parts().size(), 1U);
    flight.take(sample(0));
    flight.take(fired("welcome", 0));
    flight.take(sample(0.5));
    flight.beginAnew();
    EXPECT_EQ(flight.lastSample(), std::nullopt);
    flight.take(sample(0));
    ASSERT_EQ(flight.parts().size(), 2U);
    EXPECT_EQ(flight.parts()[0].log().size(), 2U);
    EXPECT_EQ(flight.parts()[1].log().size(), 1U);
    EXPECT_THAT(ids(flight.waiting()), ElementsAre("final", "around"));
}

TEST(LessonFlightTest, TheWholeRecordingTakesThePlaceOfWhatWasSeenOfIt) {
    LessonFlight flight(test::script(), "final");
    flight.take(sample(0));
    flight.replaceLast({sample(0), sample(0.5), fired("final", 0.5)});
    ASSERT_EQ(flight.parts().size(), 1U);
    EXPECT_EQ(flight.parts()[0].log().size(), 2U);
    EXPECT_EQ(flight.parts()[0].log().fired().size(), 1U);
    EXPECT_EQ(flight.fired().size(), 1U);
}

TEST(LessonFlightTest, ThePartHasTheLinesOfTheLog) {
    LessonFlight flight(test::script(), std::nullopt);
    flight.take(fired("welcome", 0.5));
    EXPECT_EQ(flight.parts()[0].lines(),
              "{\"kind\":\"fired\",\"fired\":{\"trigger_id\":\"welcome\",\"elapsed_s\":0.5,"
              "\"action_kind\":\"speak\"}}\n");
}

TEST(LessonFlightTest, TheSpeedIsThatOfTheLastSecondsOverGround) {
    LessonFlight flight(test::script(), std::nullopt);
    EXPECT_EQ(flight.groundSpeedKts(), std::nullopt);
    // A minute of latitude is a nautical mile.
    const double knots = 90;
    for (double time = 0; time <= 10; time += 0.5)
        flight.take(sample(time, knots / 3600 * time / 60));
    EXPECT_NEAR(flight.groundSpeedKts().value_or(0), knots, 0.5);
    flight.take(sample(60, 0.5));
    EXPECT_EQ(flight.groundSpeedKts(), std::nullopt); // nobody knows what was flown in a gap
    for (double time = 60.5; time <= 70; time += 0.5)
        flight.take(sample(time, 0.5));
    EXPECT_EQ(flight.groundSpeedKts(), 0);
}

} // namespace
} // namespace tarnly::client
