#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <new>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"

/// A process that is killed while it records leaves a log that can be read, with all in it that was written
/// by then, in order.
namespace tarnly {
namespace {

/// The tests of whole programs have as many as one likes (`TARNLY_KILL_ROUNDS`).
constexpr std::size_t kills = 20;

constexpr auto patience = std::chrono::seconds(60);

std::chrono::sys_seconds midnight() { return std::chrono::sys_days(std::chrono::year(2026) / 11 / 16); }

/// A number that the child counts up and the parent reads.
class SharedCounter {
  public:
    SharedCounter()
        : memory_(mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
        if (memory_ == MAP_FAILED) throw std::bad_alloc();
        new (memory_) Count(0);
    }
    SharedCounter(const SharedCounter&) = delete;
    SharedCounter& operator=(const SharedCounter&) = delete;
    ~SharedCounter() { munmap(memory_, sizeof(Count)); }

    std::atomic<std::size_t>& value() { return *static_cast<Count*>(memory_); }

  private:
    using Count = std::atomic<std::size_t>;
    static_assert(Count::is_always_lock_free);

    void* memory_;
};

/// The sample with this number. Every other one spans several pages, so that the kill may well come amid its
/// write.
TrackSample numberedSample(std::size_t number) {
    auto sample = test::fullSampleAt(static_cast<double>(number));
    if (number % 2 == 1) sample.throttleRatio = std::vector<double>(2000, 0.6512500047683716);
    return sample;
}

/// `written` counts the samples whose write the process has waited for.
[[noreturn]] void recordUntilKilled(const std::filesystem::path& folder, std::atomic<std::size_t>& written) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    SystemClock clock;
    FlightRecorder recording(folder, clock, midnight);
    recording.start();
    for (std::size_t number = 0;; ++number) {
        test::record(recording, numberedSample(number));
        if (number % 3 != 2) continue;
        test::waitUntilWritten(recording);
        written = number + 1;
    }
}

bool waitUntilAtLeast(const std::atomic<std::size_t>& recorded, std::size_t count) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (recorded < count && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    return recorded >= count;
}

/// Lets a child record `count` samples and kills it during the next ones. How many were written by then.
std::size_t recordAndKill(const std::filesystem::path& folder, std::size_t count) {
    SharedCounter recorded;
    const pid_t child = fork();
    if (child == 0) recordUntilKilled(folder, recorded.value());
    EXPECT_GT(child, 0);
    EXPECT_TRUE(waitUntilAtLeast(recorded.value(), count));
    kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    return recorded.value();
}

/// Each sample is followed by what fired on it, as far as the log goes.
void expectNothingLost(const test::ReadLog& log, std::size_t written) {
    EXPECT_EQ(log.unreadableLines, 0U);
    EXPECT_GE(log.lines.size(), 2 * written);
    for (std::size_t i = 0; i < log.lines.size(); ++i) {
        const auto number = i / 2;
        const auto line = i % 2 == 0 ? LogLine::of(numberedSample(number))
                                     : LogLine::of(test::firedAt(static_cast<double>(number)));
        ASSERT_EQ(log.lines[i], line) << i;
    }
}

TEST(FlightRecorderKill, EveryLineThatWasWrittenIsThere) {
    int tornEnds = 0;
    for (std::size_t round = 0; round < kills; ++round) {
        const test::TemporaryFolder folder;
        const auto recorded = recordAndKill(folder.path(), 1 + round);
        const auto log = test::readLogFile(folder.path() / RecordingLog::fileName(midnight()));
        expectNothingLost(log, recorded);
        if (log.hasTornEnd) ++tornEnds;
    }
    RecordProperty("kills", static_cast<int>(kills));
    RecordProperty("torn_ends", tornEnds);
}

} // namespace
} // namespace tarnly
