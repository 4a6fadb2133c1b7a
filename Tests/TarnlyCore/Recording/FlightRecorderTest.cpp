#include "TarnlyCore/Recording/FlightRecorder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::firedAt;
using test::sampleAt;

class FlightRecorderTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    std::chrono::sys_seconds now = std::chrono::sys_days(std::chrono::year(2026) / 11 / 16) + 1h + 9min + 38s;

    const FlightRecorder::WallClock wallClock = [this] { return now; };
    test::VirtualClock clock;
    boost::asio::io_context io;

    FlightRecorder recording{folder.path(), clock, wallClock};

    const fs::path file = folder.path() / "session-2026-11-16T010938Z.jsonl";

    std::size_t fileCount() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
    }

    /// What stands in a log once all is written.
    test::ReadLog readLogFile(const fs::path& log) {
        test::waitUntilWritten(recording);
        return test::readLogFile(log);
    }

    std::string contentOf(const fs::path& log) {
        test::waitUntilWritten(recording);
        return test::contentOf(log);
    }

    static fs::perms mode(const fs::path& path) { return fs::status(path).permissions(); }
};

std::vector<double> times(const std::vector<TrackSample>& samples) {
    std::vector<double> result;
    for (const auto& sample : samples)
        result.push_back(sample.elapsedSeconds);
    return result;
}

TEST_F(FlightRecorderTest, BeginsIdle) {
    EXPECT_FALSE(recording.isRecording());
    EXPECT_EQ(recording.generation(), 0);
    EXPECT_EQ(recording.directory(), folder.path());
    EXPECT_EQ(test::catchUp(recording), RecordedFlight());
    EXPECT_EQ(fileCount(), 0U);
}

TEST_F(FlightRecorderTest, StartCreatesAnEmptyLogOfTheTime) {
    recording.start();
    EXPECT_TRUE(recording.isRecording());
    EXPECT_EQ(recording.generation(), 1);
    EXPECT_EQ(contentOf(file), "");
    EXPECT_EQ(mode(file), fs::perms(0600));
}

TEST_F(FlightRecorderTest, KeepsAndLogsWhatItIsTold) {
    const auto sample = test::fullSampleAt(0.25);
    recording.start();
    test::record(recording, sample);
    recording.recordSample(sampleAt(0.75));
    EXPECT_EQ(test::catchUp(recording), (RecordedFlight{{sample, sampleAt(0.75)}, {firedAt(0.25)}}));
    EXPECT_EQ(readLogFile(file).lines,
              (std::vector{LogLine::of(sample), LogLine::of(firedAt(0.25)), LogLine::of(sampleAt(0.75))}));
}

TEST_F(FlightRecorderTest, LinesAreCompleteOnceTheyAreWritten) {
    recording.start();
    recording.recordSample(sampleAt(1));
    EXPECT_EQ(contentOf(file), "{\"kind\":\"sample\",\"sample\":{\"elapsed_s\":1,\"alt_ft\":2500}}\n");
    test::record(recording, sampleAt(2));
    EXPECT_EQ(readLogFile(file).lines.size(), 3U);
    EXPECT_EQ(contentOf(file).back(), '\n');
}

TEST_F(FlightRecorderTest, SamplesOutsideARecordingAreDroppedAndNothingFires) {
    const auto neverAsked = [](const TrackSample&) {
        ADD_FAILURE();
        return FiredTriggers();
    };
    recording.recordSample(sampleAt(1), std::nullopt, neverAsked);
    recording.start();
    recording.recordSample(sampleAt(2));
    recording.stop();
    recording.recordSample(sampleAt(3), std::nullopt, neverAsked);
    EXPECT_EQ(times(test::catchUp(recording).samples), std::vector{2.0});
    EXPECT_EQ(readLogFile(file).lines.size(), 1U);
}

TEST_F(FlightRecorderTest, StopKeepsTheRecording) {
    recording.start();
    recording.recordSample(sampleAt(1));
    recording.stop();
    EXPECT_FALSE(recording.isRecording());
    EXPECT_EQ(recording.generation(), 1);
    EXPECT_EQ(times(test::catchUp(recording).samples), std::vector{1.0});
    recording.stop();
    EXPECT_EQ(times(test::catchUp(recording).samples), std::vector{1.0});
}

TEST_F(FlightRecorderTest, TellsForHowLongItHasBeenRunning) {
    EXPECT_FALSE(recording.runningFor());
    for (int i = 0; i < 2; ++i) { // the second start begins anew
        recording.start();
        EXPECT_EQ(recording.runningFor(), 0ns);
        clock.advance(io, 90s);
        EXPECT_EQ(recording.runningFor(), 90s);
    }
    recording.stop();
    EXPECT_FALSE(recording.runningFor());
}

TEST_F(FlightRecorderTest, TellsHowTheRecordingGetsOn) {
    EXPECT_FALSE(recording.progress());
    for (const char* second : {"38", "39"}) { // the second start begins anew
        recording.start();
        now += 1s;
        const auto log = folder.path() / (std::string("session-2026-11-16T0109") + second + "Z.jsonl");
        test::waitUntilWritten(recording);
        clock.advance(io, 5s);
        auto progress = recording.progress();
        ASSERT_TRUE(progress);
        EXPECT_EQ(progress->file, fs::absolute(log).string());
        EXPECT_EQ(progress->runningFor, 5s);
        EXPECT_EQ(progress->samples, 0U);
        EXPECT_FALSE(progress->lastSampleAge);
        recording.recordSample(sampleAt(5));
        clock.advance(io, 500ms);
        test::record(recording, sampleAt(5.5));
        clock.advance(io, 2s);
        progress = recording.progress();
        ASSERT_TRUE(progress);
        EXPECT_EQ(progress->runningFor, 7500ms);
        EXPECT_EQ(progress->samples, 2U);
        EXPECT_EQ(progress->lastSampleAge, 2s);
        recording.recordSample(sampleAt(6), clock.now() - 1500ms);
        EXPECT_EQ(recording.progress()->lastSampleAge, 1500ms);
    }
    recording.stop();
    EXPECT_FALSE(recording.progress());
}

TEST_F(FlightRecorderTest, WithoutAFileTheProgressNamesNoneAndSaysWhy) {
    FlightRecorder other(folder.write("plain", "") / "Recordings", clock, wallClock);
    other.start();
    other.recordSample(sampleAt(1));
    test::waitUntilWritten(other);
    const auto progress = other.progress();
    ASSERT_TRUE(progress);
    EXPECT_EQ(progress->file, "");
    EXPECT_EQ(progress->samples, 1U);
    EXPECT_THAT(progress->problem, testing::HasSubstr("there is no folder"));
    EXPECT_THAT(other.problemsOfEarlier(), testing::IsEmpty());
    other.stop();
    test::waitUntilWritten(other);
    EXPECT_THAT(other.problemsOfEarlier(), testing::ElementsAre(progress->problem));
}

TEST_F(FlightRecorderTest, StopBeforeAnyStartIsHarmless) {
    recording.stop();
    EXPECT_FALSE(recording.isRecording());
    EXPECT_EQ(recording.generation(), 0);
}

TEST_F(FlightRecorderTest, StartWhileRecordingStartsOverInANewFile) {
    recording.start();
    test::record(recording, sampleAt(1));
    now += 1s;
    recording.start();
    recording.recordSample(sampleAt(0.5));
    EXPECT_TRUE(recording.isRecording());
    EXPECT_EQ(recording.generation(), 2);
    EXPECT_EQ(test::catchUp(recording), (RecordedFlight{{sampleAt(0.5)}, {}}));
    EXPECT_EQ(readLogFile(file).lines.size(), 2U);
    const auto next = folder.path() / "session-2026-11-16T010939Z.jsonl";
    EXPECT_EQ(readLogFile(next).lines, std::vector{LogLine::of(sampleAt(0.5))});
}

TEST_F(FlightRecorderTest, SecondStartWithinTheSecondLeavesTheFirstFile) {
    recording.start();
    recording.recordSample(sampleAt(1));
    recording.start();
    recording.recordSample(sampleAt(0.5));
    const auto second = folder.path() / "session-2026-11-16T010938Z-2.jsonl";
    EXPECT_EQ(readLogFile(second).lines, std::vector{LogLine::of(sampleAt(0.5))});
    EXPECT_EQ(readLogFile(file).lines, std::vector{LogLine::of(sampleAt(1))});
    EXPECT_EQ(recording.progress()->file, fs::absolute(second).string());
    EXPECT_EQ(fileCount(), 2U);
}

TEST_F(FlightRecorderTest, AnEmptyFileOfTheSecondIsUsedAgain) {
    for (int i = 0; i < 3; ++i)
        recording.start();
    recording.recordSample(sampleAt(0.5));
    EXPECT_EQ(readLogFile(file).lines, std::vector{LogLine::of(sampleAt(0.5))});
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(FlightRecorderTest, AFolderThatHasGoneIsMadeAgainByTheNextRecording) {
    const auto inner = folder.path() / "Recordings";
    FlightRecorder other(inner, clock, wallClock);
    other.start();
    other.recordSample(sampleAt(1));
    test::waitUntilWritten(other);
    fs::remove_all(inner);
    other.recordSample(sampleAt(2));
    test::waitUntilWritten(other);
    EXPECT_THAT(other.progress()->problem, testing::HasSubstr("there is no folder " + inner.string()));
    EXPECT_FALSE(fs::exists(inner));
    other.start();
    other.recordSample(sampleAt(3));
    test::waitUntilWritten(other);
    EXPECT_EQ(other.progress()->problem, "");
    EXPECT_EQ(test::readLogFile(inner / file.filename()).lines.size(), 1U);
}

TEST_F(FlightRecorderTest, CatchUpReturnsWhatLiesStrictlyAfter) {
    recording.start();
    for (const double time : {9.9, 10.0, 10.1}) {
        test::record(recording, sampleAt(time));
    }
    EXPECT_EQ(test::catchUp(recording, 10.0), (RecordedFlight{{sampleAt(10.1)}, {firedAt(10.1)}}));
    EXPECT_EQ(test::catchUp(recording, 10.1), RecordedFlight());
    EXPECT_EQ(test::catchUp(recording, -1.0), test::catchUp(recording));
}

TEST_F(FlightRecorderTest, CatchUpDoesNotAssumeAnOrder) {
    recording.start();
    for (const double time : {5.0, 1.0, 4.0, 2.0, 3.0}) {
        test::record(recording, sampleAt(time));
    }
    const auto late = test::catchUp(recording, 2.0);
    EXPECT_EQ(times(late.samples), (std::vector{5.0, 4.0, 3.0}));
    EXPECT_EQ(late.fired, (std::vector{firedAt(5), firedAt(4), firedAt(3)}));
}

TEST_F(FlightRecorderTest, CatchUpOfALongRecordingIsWhole) {
    recording.start();
    std::vector<double> all;
    for (int i = 0; i < 1000; ++i) {
        all.push_back(i * 0.5);
        recording.recordSample(sampleAt(all.back()));
    }
    EXPECT_EQ(times(test::catchUp(recording).samples), all);
    EXPECT_EQ(times(test::catchUp(recording, 498.5).samples), (std::vector{499.0, 499.5}));
}

TEST_F(FlightRecorderTest, ValuesThatAreNotFiniteAreLeftOutOfTheirSample) {
    auto odd = test::fullSampleAt(2);
    odd.altitudeFt = std::numeric_limits<double>::quiet_NaN();
    odd.aglFt = std::numeric_limits<double>::infinity();
    odd.throttleRatio = {0.5, -std::numeric_limits<double>::infinity()};
    auto expected = test::fullSampleAt(2);
    expected.altitudeFt = 0;
    expected.aglFt.reset();
    expected.throttleRatio.reset();
    recording.start();
    recording.recordSample(sampleAt(1));
    std::optional<TrackSample> seenByTriggers;
    recording.recordSample(odd, std::nullopt, [&](const TrackSample& recorded) {
        seenByTriggers = recorded;
        return FiredTriggers();
    });
    EXPECT_EQ(seenByTriggers, expected);
    recording.recordSample(sampleAt(3));
    const auto caughtUp = test::catchUp(recording);
    EXPECT_EQ(caughtUp.samples, (std::vector{sampleAt(1), expected, sampleAt(3)}));
    EXPECT_NO_THROW(encodeJson(caughtUp));
    const auto log = readLogFile(file);
    EXPECT_EQ(log.lines,
              (std::vector{LogLine::of(sampleAt(1)), LogLine::of(expected), LogLine::of(sampleAt(3))}));
    EXPECT_EQ(log.unreadableLines, 0U);
}

TEST_F(FlightRecorderTest, CreatesItsFoldersForTheOwnerOnly) {
    const auto above = folder.path() / "Tarnly";
    const FlightRecorder other(above / "Recordings", clock, wallClock);
    EXPECT_EQ(mode(above), fs::perms(0700));
    EXPECT_EQ(mode(above / "Recordings"), fs::perms(0700));
}

TEST_F(FlightRecorderTest, LeavesTheModeOfAFolderThatExists) {
    fs::permissions(folder.path(), fs::perms(0750));
    const FlightRecorder other(folder.path(), clock, wallClock);
    EXPECT_EQ(mode(folder.path()), fs::perms(0750));
}

TEST_F(FlightRecorderTest, RecordsInMemoryWhereTheFolderCannotBe) {
    const auto plainFile = folder.write("plain", "");
    FlightRecorder other(plainFile / "Recordings", clock, wallClock);
    other.start();
    EXPECT_TRUE(other.isRecording());
    test::record(other, sampleAt(1));
    EXPECT_EQ(test::catchUp(other), (RecordedFlight{{sampleAt(1)}, {firedAt(1)}}));
    other.stop();
    EXPECT_EQ(test::catchUp(other, 0.5), (RecordedFlight{{sampleAt(1)}, {firedAt(1)}}));
    EXPECT_EQ(test::contentOf(plainFile), "");
}

TEST_F(FlightRecorderTest, AFolderOfTheNameIsLeftAlone) {
    fs::create_directory(file);
    recording.start();
    recording.recordSample(sampleAt(1));
    EXPECT_EQ(readLogFile(folder.path() / "session-2026-11-16T010938Z-2.jsonl").lines,
              std::vector{LogLine::of(sampleAt(1))});
    EXPECT_TRUE(fs::is_empty(file));
}

TEST_F(FlightRecorderTest, WithoutAClockOfItsOwnItGoesByTheSystems) {
    FlightRecorder other(folder.path(), clock);
    const auto before = RecordingLog::fileName(FlightRecorder::systemTime());
    other.start();
    const auto after = RecordingLog::fileName(FlightRecorder::systemTime());
    test::waitUntilWritten(other);
    const auto name = fs::directory_iterator(folder.path())->path().filename().string();
    EXPECT_LE(before, name);
    EXPECT_LE(name, after);
}

} // namespace
} // namespace tarnly
