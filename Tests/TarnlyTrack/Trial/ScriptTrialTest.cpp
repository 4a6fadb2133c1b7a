#include "TarnlyTrack/Trial/ScriptTrial.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Kind = TriggerConditionKind;

/// A log with these samples, each the inside of its JSON object.
FlightLog logOf(std::initializer_list<std::string> samples) {
    FlightLogReader reader;
    for (const auto& sample : samples)
        reader.add(R"({"kind":"sample","sample":{)" + sample + "}}\n");
    return reader.finish();
}

ArmedTrigger triggerOf(std::string id, TriggerCondition condition) {
    return {std::move(id), "", std::move(condition), "speak", {}};
}

std::optional<Coordinate> fixPosition(const std::string& ident) {
    if (ident == "RIDGE") return Coordinate{47, 8};
    return std::nullopt;
}

Trial trialOf(const FlightLog& log, std::vector<ArmedTrigger> triggers) {
    return tryScript(TriggerEngine(std::move(triggers), fixPosition), log, fixPosition);
}

/// Of a trigger with this condition, over `log`.
std::string wordsOf(const FlightLog& log, TriggerCondition condition) {
    const auto trial = trialOf(log, {triggerOf("it", std::move(condition))});
    EXPECT_THAT(trial.fired, IsEmpty());
    return trial.missed.empty() ? "" : trial.missed.front().words;
}

TriggerCondition crossing(double feet, bool climbing) {
    return {.kind = Kind::crossesAgl, .feet = feet, .climbing = climbing};
}

// A descent to 540 feet above ground and back, a sample a second.
FlightLog lowPass() {
    return logOf({R"("elapsed_s":0,"alt_ft":1,"agl_ft":900.2)", R"("elapsed_s":1,"alt_ft":1,"agl_ft":540.2)",
                  R"("elapsed_s":2,"alt_ft":1,"agl_ft":800)"});
}

TEST(ScriptTrial, TellsWhatFiresInTheOrderOfFiring) {
    const auto log = logOf({R"("elapsed_s":0,"alt_ft":1)", R"("elapsed_s":1,"alt_ft":1,"lat":47,"lon":8)",
                            R"("elapsed_s":2,"alt_ft":1)", R"("elapsed_s":3,"alt_ft":1)"});
    const auto trial = trialOf(
        log, {triggerOf("late", {.kind = Kind::afterTrigger, .seconds = 1, .afterTriggerId = "ridge"}),
              triggerOf("ridge", {.kind = Kind::reachesFix, .fix = "ridge", .withinNm = 1})});
    ASSERT_EQ(trial.fired.size(), 2U);
    EXPECT_EQ(trial.fired[0].triggerId, "ridge");
    EXPECT_EQ(trial.fired[0].elapsed, 1);
    EXPECT_EQ(trial.fired[0].lat, 47);
    EXPECT_EQ(trial.fired[1].triggerId, "late");
    EXPECT_EQ(trial.fired[1].elapsed, 2);
    EXPECT_THAT(trial.firedOn, ElementsAre(1, 2));
    EXPECT_THAT(trial.missed, IsEmpty());
}

TEST(ScriptTrial, TellsHowFarAboveItsHeightADescentEnded) {
    EXPECT_EQ(wordsOf(lowPass(), crossing(500, false)),
              "never below 540 ft AGL (at 0:01), and waits for 500 ft on the way down");
}

TEST(ScriptTrial, DoesNotRoundANearMissToAHit) {
    EXPECT_EQ(wordsOf(lowPass(), crossing(540, false)),
              "never below 540.2 ft AGL (at 0:01), and waits for 540 ft on the way down");
}

TEST(ScriptTrial, TellsHowHighAClimbWent) {
    EXPECT_EQ(wordsOf(lowPass(), crossing(850, true)),
              "never above 800 ft AGL (at 0:02), and waits for 850 ft on the way up");
}

TEST(ScriptTrial, TellsHowHighAFlightWasThatOnlyDescended) {
    EXPECT_EQ(wordsOf(lowPass(), crossing(1000, true)),
              "never above 900 ft AGL (at 0:00), and waits for 1000 ft on the way up");
}

TEST(ScriptTrial, TellsThatAFlightNeverCameFromTheSideItHasTo) {
    EXPECT_EQ(wordsOf(lowPass(), crossing(1000, false)),
              "never above 900 ft AGL (at 0:00), and waits for 1000 ft on the way down");
    EXPECT_EQ(wordsOf(lowPass(), crossing(500, true)),
              "never below 540 ft AGL (at 0:01), and waits for 500 ft on the way up");
}

TEST(ScriptTrial, TellsOfACrossingThatTheRecordingDoesNotShow) {
    const auto log = logOf({R"("elapsed_s":0,"alt_ft":1,"agl_ft":900)", R"("elapsed_s":1,"alt_ft":1)",
                            R"("elapsed_s":2,"alt_ft":1,"agl_ft":200)"});
    EXPECT_EQ(
        wordsOf(log, crossing(500, false)),
        "passed 500 ft AGL only where the recording has a gap, or does not tell the height, and waits for "
        "500 ft on the way down");
}

TEST(ScriptTrial, TellsOfValuesThatTheRecordingDoesNotHave) {
    const auto log = logOf({R"("elapsed_s":0,"alt_ft":0)", R"("elapsed_s":1,"alt_ft":0)"});
    EXPECT_EQ(wordsOf(log, crossing(500, false)), "the recording has no height above ground");
    EXPECT_EQ(wordsOf(log, {.kind = Kind::crossesAltitude, .feet = 500, .climbing = true}),
              "the recording has no altitude");
    EXPECT_EQ(wordsOf(log, {.kind = Kind::reachesFix, .fix = "RIDGE", .withinNm = 1}),
              "the recording has no position");
    EXPECT_EQ(wordsOf(log, {.kind = Kind::afterGearDown, .seconds = 1}),
              "the recording does not tell of the gear");
    EXPECT_EQ(wordsOf(logOf({}), crossing(500, false)), "the recording has no samples");
}

TEST(ScriptTrial, TellsTheNearestPointToAFix) {
    // A minute of latitude is a nautical mile.
    const auto log = logOf({R"("elapsed_s":3599,"alt_ft":1,"lat":47.05,"lon":8)",
                            R"("elapsed_s":3600,"alt_ft":1,"lat":47.025,"lon":8)",
                            R"("elapsed_s":3601,"alt_ft":1,"lat":47.04,"lon":8)"});
    EXPECT_EQ(wordsOf(log, {.kind = Kind::reachesFix, .fix = "ridge", .withinNm = 1}),
              "closest 1.5 nm to RIDGE at 1:00:00, and waits for 1 nm");
    EXPECT_EQ(wordsOf(log, {.kind = Kind::reachesFix, .fix = "nowhere", .withinNm = 1}),
              "the fix NOWHERE was not found");
}

TEST(ScriptTrial, TellsHowLongTheGearWasDown) {
    const auto log = logOf({R"("elapsed_s":0,"alt_ft":1,"gear_down":false)",
                            R"("elapsed_s":1,"alt_ft":1,"gear_down":true)", R"("elapsed_s":2,"alt_ft":1)",
                            R"("elapsed_s":3,"alt_ft":1,"gear_down":true)",
                            R"("elapsed_s":4,"alt_ft":1,"gear_down":false)"});
    EXPECT_EQ(wordsOf(log, {.kind = Kind::afterGearDown, .seconds = 5}),
              "the gear was down for 2 s at the most (from 0:01), and it waits for 5 s");
    const auto up = logOf({R"("elapsed_s":0,"alt_ft":1,"gear_down":false)"});
    EXPECT_EQ(wordsOf(up, {.kind = Kind::afterGearDown, .seconds = 5}), "the gear was never down");
}

TEST(ScriptTrial, TellsThatTheRecordingEndsTooEarly) {
    const auto trial = trialOf(
        lowPass(), {triggerOf("start", {.kind = Kind::afterStart, .seconds = 1}),
                    triggerOf("end", {.kind = Kind::afterStart, .seconds = 60}),
                    triggerOf("next", {.kind = Kind::afterTrigger, .seconds = 9, .afterTriggerId = "start"}),
                    triggerOf("last", {.kind = Kind::afterTrigger, .seconds = 0, .afterTriggerId = "end"})});
    ASSERT_EQ(trial.missed.size(), 3U);
    EXPECT_EQ(trial.missed[0].words, "the recording ends at 0:02, and it waits for 1:00");
    EXPECT_EQ(trial.missed[1].words, "the recording ends 1 s after \"start\" fired, and it waits for 9 s");
    EXPECT_EQ(trial.missed[2].words, "waits for \"end\", which did not fire");
}

TEST(ScriptTrial, TellsOfAConditionThatLacksSomething) {
    EXPECT_EQ(wordsOf(lowPass(), {.kind = Kind::crossesAgl, .feet = 500}),
              "it lacks what its kind of condition needs: look with script --check");
}

TEST(ScriptTrial, NamesTheSampleOfTheNearestMoment) {
    const auto trial = trialOf(lowPass(), {triggerOf("low", crossing(500, false))});
    ASSERT_EQ(trial.missed.size(), 1U);
    EXPECT_EQ(trial.missed.front().sample, 1U);
}

// As after a restart of the simulator, which the log shows as nothing but a gap.
TEST(ScriptTrial, TakesAnAircraftThatIsElsewhereBehindAGapForOneThatWasTakenThere) {
    const auto near = logOf({R"("elapsed_s":0,"alt_ft":1,"agl_ft":900,"lat":47,"lon":8)",
                             R"("elapsed_s":60,"alt_ft":1,"agl_ft":200,"lat":47.01,"lon":8)"});
    EXPECT_EQ(trialOf(near, {triggerOf("low", crossing(500, false))}).fired.size(), 1U);
    const auto far = logOf({R"("elapsed_s":0,"alt_ft":1,"agl_ft":900,"lat":47,"lon":8)",
                            R"("elapsed_s":60,"alt_ft":1,"agl_ft":200,"lat":49,"lon":8)"});
    EXPECT_THAT(trialOf(far, {triggerOf("low", crossing(500, false))}).fired, IsEmpty());
}

} // namespace
} // namespace tarnly::track
