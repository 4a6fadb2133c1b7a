#include "TarnlyCore/Recording/SamplingLoop.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FakeBackend.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

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

    void load(std::vector<ArmedTrigger> triggers) {
        loadedScript->set(TriggerEngine(std::move(triggers),
                                        [](const std::string&) { return std::optional<Coordinate>(); }));
    }

    int samplesAsked() const { return backend->count("getTrackSample"); }

    std::vector<double> sampleTimes() const {
        std::vector<double> times;
        for (const auto& sample : recording->catchUp(std::nullopt).samples) {
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
    const auto sample = recording->catchUp(std::nullopt).samples.front();
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
    backend->clock = &clock;
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
    EXPECT_EQ(recording->catchUp(std::nullopt).fired, expected);
}

TEST_F(SamplingLoopTest, TriggersSeeTheSample) {
    TriggerCondition climbs;
    climbs.kind = TriggerConditionKind::crossesAgl;
    climbs.feet = 500;
    climbs.climbing = true;
    load({{"climbs", "", climbs, "say", {}}});
    backend->sample.aglFt = 400;
    recording->start();
    loop->start();
    clock.settle(io);
    backend->sample.aglFt = 500;
    clock.advance(io, 500ms);
    EXPECT_EQ(recording->catchUp(std::nullopt).fired,
              (std::vector<FiredTriggerEvent>{{"climbs", 0.5, "say"}}));
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
