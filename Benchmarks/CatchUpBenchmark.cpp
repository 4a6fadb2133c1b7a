#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Protocol/CatchUpReply.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyCore/Script/Triggers.hpp"

/// What a long recording costs. What must hold: the reply to a catch-up of 72,000 samples, ten hours, is
/// encoded within 150 ms, and a sample that comes meanwhile does not wait for it.
namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr int tenHours = 72'000;

/// A recording of ten hours with 2,000 fired triggers. Its log lies in a folder of its own.
class Flight {
  public:
    Flight() : recording(folder_.path(), clock_) {
        recording.start();
        for (int i = 0; i < tenHours; ++i) {
            test::record(recording, test::fullSampleAt(0.5001 * i),
                         std::vector<std::string>(i % 36 == 0 ? 1 : 0, "gear-check"));
        }
    }

  private:
    const test::TemporaryFolder folder_;
    SystemClock clock_;

  public:
    FlightRecorder recording; // depends-on: folder_, clock_
};

/// All pieces, of which one at a time is kept; how many bytes they have.
std::size_t encodedSize(const FlightRecorder& recording, std::optional<double> since = std::nullopt) {
    CatchUpReply reply({"catch_up", 7}, recording.snapshot(), since);
    std::size_t size = 0;
    while (!reply.isWhole())
        size += reply.nextPiece().size();
    return size;
}

void sampleIsRecorded(benchmark::State& state) {
    const test::TemporaryFolder folder;
    SystemClock clock;
    FlightRecorder recording(folder.path(), clock);
    recording.start();
    const auto sample = test::fullSampleAt(1234.5678);
    for (auto _ : state)
        recording.recordSample(sample);
}

/// What a kill can cost: the time until the recorder thread has written a sample.
void sampleIsWritten(benchmark::State& state) {
    const test::TemporaryFolder folder;
    SystemClock clock;
    FlightRecorder recording(folder.path(), clock);
    recording.start();
    const auto sample = test::fullSampleAt(1234.5678);
    for (auto _ : state) {
        recording.recordSample(sample);
        test::waitUntilWritten(recording);
    }
}

void sampleIsRecordedWithoutAFile(benchmark::State& state) {
    const test::TemporaryFolder folder;
    SystemClock clock;
    FlightRecorder recording(folder.write("plain", "") / "Recordings", clock);
    recording.start();
    const auto sample = test::fullSampleAt(1234.5678);
    for (auto _ : state)
        recording.recordSample(sample);
}

/// What the lock is held for.
void snapshotIsTaken(benchmark::State& state) {
    const Flight flight;
    for (auto _ : state)
        benchmark::DoNotOptimize(flight.recording.snapshot());
}

void allIsEncoded(benchmark::State& state) {
    const Flight flight;
    std::size_t bytes = 0;
    for (auto _ : state)
        bytes = encodedSize(flight.recording);
    state.counters["bytes"] = static_cast<double>(bytes);
}

void lastMinuteIsEncoded(benchmark::State& state) {
    const Flight flight;
    for (auto _ : state)
        benchmark::DoNotOptimize(encodedSize(flight.recording, 0.5001 * (tenHours - 120)));
}

/// The counter is what malloc has given out for a day's samples, for each of them.
void dayIsKept(benchmark::State& state) {
    constexpr std::size_t day = 172'800;
    for (auto _ : state) {
        const auto before = mallinfo2();
        SampleList samples;
        for (std::size_t i = 0; i < day; ++i)
            samples.append(test::fullSampleAt(0.5 * static_cast<double>(i)));
        const auto after = mallinfo2();
        state.counters["bytes_a_sample"] =
            static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) /
            static_cast<double>(day);
    }
}

/// How long the heartbeat is held by a hundred thousand triggers that fire on one sample.
void manyTriggersFireOnASample(benchmark::State& state) {
    const test::TemporaryFolder folder;
    SystemClock clock;
    FlightRecorder recording(folder.path(), clock);
    std::vector<ArmedTrigger> script;
    for (int i = 0; i < 100'000; ++i)
        script.push_back(test::armed("trigger-" + std::to_string(i), test::afterStart(0)));
    TriggerEngine engine(script, [](const std::string&) { return std::nullopt; });
    const auto fire = [&](const TrackSample& recorded) {
        return engine.evaluate({.elapsed = recorded.elapsedSeconds});
    };
    for (auto _ : state) {
        state.PauseTiming();
        engine.reset();
        recording.start();
        test::waitUntilWritten(recording);
        state.ResumeTiming();
        recording.recordSample(test::fullSampleAt(1), std::nullopt, fire);
    }
}

void longRecordingIsLetGo(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto flight = std::make_unique<Flight>();
        state.ResumeTiming();
        flight->recording.start();
        state.PauseTiming();
        flight.reset();
        state.ResumeTiming();
    }
}

/// Samples while another thread catches up again and again; the counters are the longest and the 99th
/// percentile of the calls, in microseconds.
void sampleIsRecordedBesideCatchUps(benchmark::State& state) {
    Flight flight;
    std::atomic<bool> isDone = false;
    std::thread reader([&] {
        while (!isDone)
            benchmark::DoNotOptimize(encodedSize(flight.recording));
    });
    const auto sample = test::fullSampleAt(1234.5678);
    std::vector<double> microseconds;
    for (auto _ : state) {
        const auto begin = SteadyClock::now();
        flight.recording.recordSample(sample);
        microseconds.push_back(std::chrono::duration<double, std::micro>(SteadyClock::now() - begin).count());
    }
    isDone = true;
    reader.join();
    std::ranges::sort(microseconds);
    state.counters["p99_us"] = microseconds[microseconds.size() * 99 / 100];
    state.counters["max_us"] = microseconds.back();
}

BENCHMARK(sampleIsRecorded)->Unit(benchmark::kMicrosecond);
BENCHMARK(sampleIsWritten)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(sampleIsRecordedWithoutAFile)->Unit(benchmark::kMicrosecond);
BENCHMARK(snapshotIsTaken)->Unit(benchmark::kMicrosecond);
BENCHMARK(allIsEncoded)->Unit(benchmark::kMillisecond);
BENCHMARK(lastMinuteIsEncoded)->Unit(benchmark::kMicrosecond);
BENCHMARK(dayIsKept)->Unit(benchmark::kMillisecond);
BENCHMARK(manyTriggersFireOnASample)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK(longRecordingIsLetGo)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(sampleIsRecordedBesideCatchUps)->Unit(benchmark::kMicrosecond)->Iterations(2000);

} // namespace
} // namespace tarnly
