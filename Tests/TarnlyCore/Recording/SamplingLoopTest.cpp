#include "TarnlyCore/Recording/SamplingLoop.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "Support/FakeBackend.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

ArmedTrigger climbing(const std::string& id, TriggerConditionKind kind, double feet) {
    TriggerCondition condition;
    condition.kind = kind;
    condition.feet = feet;
    condition.climbing = true;
    return {id, "", condition, "say " + id, {}};
}

ArmedTrigger after(const std::string& id, double seconds) {
    TriggerCondition condition;
    condition.kind = TriggerConditionKind::afterStart;
    condition.seconds = seconds;
    return {id, "", condition, "say " + id, {}};
}

struct SamplingLoopTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    test::TemporaryFolder folder;
    std::shared_ptr<test::FakeBackend> backend = std::make_shared<test::FakeBackend>();
    std::shared_ptr<FlightRecorder> recording = std::make_shared<FlightRecorder>(folder.path(), clock);
    std::shared_ptr<LoadedScript> loadedScript = std::make_shared<LoadedScript>();
    int pushes = 0;
    std::shared_ptr<SamplingLoop> loop = std::make_shared<SamplingLoop>(
        io.get_executor(), clock, backend, recording, loadedScript, [this] { ++pushes; });

    SamplingLoopTest() { backend->clock = &clock; }

    void load(std::vector<ArmedTrigger> triggers) {
        loadedScript->set(TriggerEngine(std::move(triggers),
                                        [](const std::string&) { return std::optional<Coordinate>(); }));
    }

    std::vector<FiredTriggerEvent> fired() const { return test::catchUp(*recording).fired; }

    int samplesAsked() const { return backend->count("getTrackSample"); }

    std::vector<double> sampleTimes() const {
        std::vector<double> times;
        for (const auto& sample : test::catchUp(*recording).samples) {
            times.push_back(sample.elapsedSeconds);
        }
        return times;
    }
};

TEST_F(SamplingLoopTest, PushesAtOnceAndThenTwiceASecond) {
    loop->start();
    clock.settle(io);
    EXPECT_EQ(pushes, 1);
    clock.advance(io, 499ms);
    EXPECT_EQ(pushes, 1);
    clock.advance(io, 1ms);
    EXPECT_EQ(pushes, 2);
    clock.advance(io, 10s);
    EXPECT_EQ(pushes, 22);
}

TEST_F(SamplingLoopTest, OutsideARecordingNothingIsSampledOrEvaluated) {
    load({after("a", 0)});
    loop->start();
    clock.advance(io, 5s);
    EXPECT_EQ(samplesAsked(), 0);
    EXPECT_TRUE(loadedScript->current()->fired().empty());
    EXPECT_EQ(pushes, 11);
}

TEST_F(SamplingLoopTest, ARecordingIsSampledOnItsOwnClock) {
    backend->sample.elapsedSeconds = 99;
    backend->sample.altitudeFt = 1200;
    backend->sample.aglFt = 300;
    loop->start();
    clock.advance(io, 3700ms);
    recording->start();
    clock.advance(io, 1500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0, 0.5, 1));
    const auto sample = test::catchUp(*recording).samples.front();
    EXPECT_EQ(sample.altitudeFt, 1200);
    EXPECT_EQ(sample.aglFt, 300);
    recording->stop();
    clock.advance(io, 5s);
    EXPECT_EQ(samplesAsked(), 3);
}

TEST_F(SamplingLoopTest, ANewRecordingRestartsTheClock) {
    loop->start();
    recording->start();
    clock.advance(io, 1h);
    recording->start();
    clock.advance(io, 500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0));
}

TEST_F(SamplingLoopTest, ASampleOfARecordingThatWasReplacedMeanwhileIsDropped) {
    backend->sampleDelay = 1s;
    recording->start();
    loop->start();
    clock.advance(io, 300ms);
    recording->start();
    clock.advance(io, 700ms); // the simulator answers
    EXPECT_TRUE(sampleTimes().empty());
    backend->sampleDelay = 0s;
    clock.advance(io, 500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0));
}

TEST_F(SamplingLoopTest, TriggersFireInOrderAndAreRecorded) {
    load({after("late", 1), after("first", 0.5), after("second", 0.5), after("never", 60)});
    recording->start();
    loop->start();
    clock.advance(io, 1s);
    const std::vector<FiredTriggerEvent> expected{
        {"first", 0.5, "say first"}, {"second", 0.5, "say second"}, {"late", 1, "say late"}};
    EXPECT_EQ(test::catchUp(*recording).fired, expected);
}

TEST_F(SamplingLoopTest, TriggersSeeTheSample) {
    load({climbing("climbs", TriggerConditionKind::crossesAgl, 500)});
    backend->sample.aglFt = 400;
    recording->start();
    loop->start();
    clock.settle(io);
    backend->sample.aglFt = 500;
    clock.advance(io, 500ms);
    EXPECT_EQ(fired(), (std::vector<FiredTriggerEvent>{{"climbs", 0.5, "say climbs"}}));
}

TEST_F(SamplingLoopTest, ASampleIsRecordedOnceItIsProvenAndWithItsOwnTime) {
    load({after("a", 0), after("b", 0.5)});
    backend->isAlive = false;
    recording->start();
    loop->start();
    clock.advance(io, 1900ms);
    EXPECT_TRUE(sampleTimes().empty());
    EXPECT_TRUE(fired().empty());
    backend->isAlive = true;
    clock.advance(io, 100ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0, 0.5, 1, 1.5, 2));
    EXPECT_EQ(fired(), (std::vector<FiredTriggerEvent>{{"a", 0, "say a"}, {"b", 0.5, "say b"}}));
    EXPECT_EQ(recording->progress()->lastSampleAge, 0ns);
}

TEST_F(SamplingLoopTest, WhatIsProvenIsRecordedBeforeTheNextLook) {
    backend->isAlive = false;
    recording->start();
    loop->start();
    clock.settle(io);
    backend->isAlive = true;
    backend->sampleDelay = 1s;
    clock.advance(io, 500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0));
    EXPECT_EQ(recording->progress()->lastSampleAge, 500ms);
}

TEST_F(SamplingLoopTest, ASampleIsOfTheTimeOfItsTaking) {
    backend->sampleDelay = 300ms;
    recording->start();
    loop->start();
    clock.advance(io, 1200ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0.3, 1.1));
}

TEST_F(SamplingLoopTest, ASilenceLeavesAGapAndTimeTriggersFireAfterIt) {
    load({after("a", 5)});
    recording->start();
    loop->start();
    clock.advance(io, 1s);
    backend->isAlive = false;
    clock.advance(io, 9s); // until 10 s
    EXPECT_THAT(sampleTimes(), ElementsAre(0, 0.5, 1));
    EXPECT_TRUE(fired().empty());
    backend->isAlive = true;
    clock.advance(io, 500ms);
    // What was held for three seconds or less is recorded, the rest of the silence is not.
    EXPECT_THAT(sampleTimes(), ElementsAre(0, 0.5, 1, 7.5, 8, 8.5, 9, 9.5, 10, 10.5));
    EXPECT_EQ(fired(), (std::vector<FiredTriggerEvent>{{"a", 7.5, "say a"}}));
}

TEST_F(SamplingLoopTest, WhatWasHeldOfAnotherLinkIsDropped) {
    backend->isAlive = false;
    recording->start();
    loop->start();
    clock.advance(io, 500ms);
    backend->link = 2;
    backend->isAlive = true;
    clock.advance(io, 500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(1));
}

TEST_F(SamplingLoopTest, ANewRecordingDropsWhatWasHeld) {
    backend->isAlive = false;
    recording->start();
    loop->start();
    clock.advance(io, 400ms);
    recording->start();
    backend->isAlive = true;
    clock.advance(io, 100ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0));
}

TEST_F(SamplingLoopTest, AfterAStopNothingHeldIsRecordedAndNoTriggerTested) {
    load({after("a", 0)});
    backend->isAlive = false;
    backend->sampleDelay = 300ms;
    recording->start();
    loop->start();
    clock.advance(io, 900ms); // one is held, one is being taken
    recording->stop();
    backend->isAlive = true;
    clock.advance(io, 2s);
    EXPECT_TRUE(sampleTimes().empty());
    EXPECT_TRUE(loadedScript->current()->fired().empty());
}

TEST_F(SamplingLoopTest, ABeatWaitsTwoSecondsAtMost) {
    backend->sampleDelay = 1h;
    recording->start();
    loop->start();
    clock.advance(io, 1999ms);
    EXPECT_EQ(pushes, 0);
    clock.advance(io, 1ms);
    EXPECT_EQ(pushes, 1);
    clock.advance(io, 2500ms);
    EXPECT_EQ(pushes, 2);
    EXPECT_TRUE(sampleTimes().empty());
    backend->sampleDelay = 0s;
    clock.advance(io, 500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(5));
}

TEST_F(SamplingLoopTest, AnUnknownAltitudeIsRecordedAsZeroAndCrossesNothing) {
    load({climbing("climbs", TriggerConditionKind::crossesAltitude, 1000)});
    backend->isAltitudeKnown = false;
    recording->start();
    loop->start();
    clock.settle(io);
    backend->isAltitudeKnown = true;
    backend->sample.altitudeFt = 3000;
    clock.advance(io, 500ms);
    ASSERT_THAT(sampleTimes(), ElementsAre(0, 0.5));
    EXPECT_EQ(test::catchUp(*recording).samples.front().altitudeFt, 0);
    EXPECT_TRUE(fired().empty());
}

TEST_F(SamplingLoopTest, AnAltitudeThatIsNotFiniteIsUnknown) {
    load({climbing("climbs", TriggerConditionKind::crossesAltitude, 1000)});
    backend->sample.altitudeFt = -std::numeric_limits<double>::infinity();
    recording->start();
    loop->start();
    clock.settle(io);
    backend->sample.altitudeFt = 3000;
    clock.advance(io, 500ms);
    EXPECT_EQ(test::catchUp(*recording).samples.front().altitudeFt, 0);
    EXPECT_TRUE(fired().empty());
}

TEST_F(SamplingLoopTest, BetweenTwoLinksThereIsNoCrossing) {
    load({climbing("climbs", TriggerConditionKind::crossesAltitude, 1000)});
    recording->start();
    loop->start();
    clock.settle(io);
    backend->link = 2;
    backend->sample.altitudeFt = 3000;
    clock.advance(io, 500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(0, 0.5));
    EXPECT_TRUE(fired().empty());
    backend->sample.altitudeFt = 900;
    clock.advance(io, 500ms);
    backend->sample.altitudeFt = 1100;
    clock.advance(io, 500ms);
    EXPECT_EQ(fired(), (std::vector<FiredTriggerEvent>{{"climbs", 1.5, "say climbs"}}));
}

TEST_F(SamplingLoopTest, AcrossASilenceOfOneLinkACrossingCounts) {
    load({climbing("climbs", TriggerConditionKind::crossesAltitude, 1000)});
    recording->start();
    loop->start();
    clock.settle(io);
    backend->failures["getTrackSample"] = "silent";
    clock.advance(io, 5s);
    backend->failures.clear();
    backend->sample.altitudeFt = 3000;
    clock.advance(io, 500ms);
    EXPECT_EQ(fired(), (std::vector<FiredTriggerEvent>{{"climbs", 5.5, "say climbs"}}));
}

TEST_F(SamplingLoopTest, ASimulatorThatFailsCostsItsSamplesOnly) {
    load({after("a", 0)});
    backend->failures["getTrackSample"] = "gone";
    recording->start();
    loop->start();
    clock.advance(io, 2s);
    EXPECT_TRUE(sampleTimes().empty());
    EXPECT_TRUE(loadedScript->current()->fired().empty());
    EXPECT_EQ(pushes, 5);
    backend->failures.clear();
    clock.advance(io, 500ms);
    EXPECT_THAT(sampleTimes(), ElementsAre(2.5));
}

TEST_F(SamplingLoopTest, RestartedWithinARecordingItKeepsTheClock) {
    recording->start();
    loop->start();
    clock.advance(io, 500ms);
    loop->stop();
    clock.advance(io, 2s);
    loop->start();
    clock.settle(io);
    EXPECT_THAT(sampleTimes(), ElementsAre(0, 0.5, 2.5));
}

TEST_F(SamplingLoopTest, StartingTwiceRunsOneLoop) {
    loop->start();
    loop->start();
    clock.advance(io, 500ms);
    EXPECT_EQ(pushes, 2);
}

TEST_F(SamplingLoopTest, StopEndsItAndMayBeRepeated) {
    loop->stop();
    loop->start();
    clock.advance(io, 500ms);
    loop->stop();
    loop->stop();
    clock.advance(io, 10s);
    EXPECT_EQ(pushes, 2);
}

TEST_F(SamplingLoopTest, RestsWhileNobodyNeedsIt) {
    bool isNeeded = false;
    loop = std::make_shared<SamplingLoop>(
        io.get_executor(), clock, backend, recording, loadedScript, [this] { ++pushes; }, nullptr,
        [&] { return isNeeded; });
    loop->start();
    clock.advance(io, 1h);
    EXPECT_EQ(pushes, 1);
    EXPECT_EQ(clock.sleeping(), 0U);
    isNeeded = true;
    loop->wake();
    clock.settle(io);
    EXPECT_EQ(pushes, 2);
    clock.advance(io, 1s);
    EXPECT_EQ(pushes, 4);
    loop->wake(); // it does not rest
    clock.settle(io);
    EXPECT_EQ(pushes, 4);
    isNeeded = false;
    clock.advance(io, 1h);
    EXPECT_EQ(pushes, 5);
    loop->stop();
    clock.settle(io);
    EXPECT_EQ(loop.use_count(), 1);
}

TEST_F(SamplingLoopTest, EndsWhenTheLoopIsReleased) {
    loop->start();
    clock.settle(io);
    loop.reset();
    clock.advance(io, 10s);
    EXPECT_LE(pushes, 2);
    EXPECT_EQ(clock.sleeping(), 0U);
}

} // namespace
} // namespace tarnly
