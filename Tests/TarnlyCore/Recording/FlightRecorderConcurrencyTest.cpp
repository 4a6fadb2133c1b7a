#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"

/// What holds while several threads use one recording; of most worth under ThreadSanitizer.
namespace tarnly {
namespace {

constexpr int perThread = 700; // more than two blocks in memory

class FlightRecorderConcurrency : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    SystemClock clock;
    /// Goes on a second with each start, so that each has a file of its own.
    std::atomic<std::chrono::sys_seconds> now{std::chrono::sys_days(std::chrono::year(2026) / 11 / 16)};
    FlightRecorder recording{folder.path(), clock,
                             [this] { return now = now.load() + std::chrono::seconds(1); }};

    RecordedFlight readBack() {
        test::waitUntilWritten(recording);
        const auto log = test::readLogFile(folder.path() / RecordingLog::fileName(now));
        EXPECT_EQ(log.unreadableLines, 0U);
        EXPECT_FALSE(log.hasTornEnd);
        RecordedFlight result;
        for (const auto& line : log.lines) {
            if (line.sample) result.samples.push_back(*line.sample);
            if (line.fired) result.fired.push_back(*line.fired);
        }
        return result;
    }
};

TEST_F(FlightRecorderConcurrency, OrderOfTheLogIsTheOrderInMemory) {
    recording.start();
    {
        std::vector<std::jthread> writers;
        for (int writer = 0; writer < 3; ++writer) {
            writers.emplace_back([this, writer] {
                for (int i = 0; i < perThread; ++i) {
                    test::record(recording, test::fullSampleAt(writer * perThread + i));
                }
            });
        }
    }
    const auto inMemory = test::catchUp(recording);
    EXPECT_EQ(inMemory.samples.size(), 3U * perThread);
    EXPECT_EQ(inMemory.fired.size(), 3U * perThread);
    EXPECT_EQ(readBack(), inMemory);
}

/// Of a writer that counts up there may be seen any stretch, since restarts forget, but no gap.
void expectWithoutGap(const std::vector<TrackSample>& samples) {
    for (std::size_t i = 1; i < samples.size(); ++i) {
        ASSERT_EQ(samples[i].elapsedSeconds, samples[i - 1].elapsedSeconds + 1);
    }
}

TEST_F(FlightRecorderConcurrency, CatchUpSeesNoGapWhileOthersRecordAndRestart) {
    recording.start();
    std::atomic<bool> isDone = false;
    std::atomic<std::size_t> seen = 0;
    const auto catchUpAgainAndAgain = [&] {
        while (!isDone) {
            const auto track = test::catchUp(recording);
            expectWithoutGap(track.samples);
            seen += track.samples.size();
        }
    };
    const auto restartAgainAndAgain = [&] {
        while (!isDone) {
            const auto before = recording.generation();
            recording.start();
            EXPECT_GT(recording.generation(), before);
            EXPECT_TRUE(recording.isRecording());
            std::this_thread::yield();
        }
    };
    {
        const std::jthread reader(catchUpAgainAndAgain);
        const std::jthread otherReader(catchUpAgainAndAgain);
        const std::jthread restarter(restartAgainAndAgain);
        for (int i = 0; i < perThread || seen == 0; ++i)
            recording.recordSample(test::sampleAt(i));
        isDone = true;
    }
    EXPECT_GT(recording.generation(), 0);
    EXPECT_EQ(readBack(), test::catchUp(recording));
}

TEST_F(FlightRecorderConcurrency, LogIsFinishedWhenTheStopIsWritten) {
    std::atomic<bool> isDone = false;
    const std::jthread writer([&] {
        for (int i = 0; !isDone; ++i)
            recording.recordSample(test::sampleAt(i));
    });
    for (int round = 0; round < 50; ++round) {
        recording.start();
        recording.stop();
        // A sample that was let in before may come yet, but into memory only.
        auto logged = readBack().samples;
        auto inMemory = test::catchUp(recording).samples;
        ASSERT_LE(logged.size(), inMemory.size());
        inMemory.resize(logged.size());
        EXPECT_EQ(logged, inMemory);
    }
    isDone = true;
}

} // namespace
} // namespace tarnly
