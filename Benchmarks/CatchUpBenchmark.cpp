#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Recording/Recordings.hpp"

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
            recording.recordSample(test::fullSampleAt(0.5001 * i));
            if (i % 36 == 0) recording.recordFired(test::firedAt(0.5001 * i));
        }
    }

  private:
    const test::TemporaryFolder folder_;
    const SystemClock clock_;

  public:
    FlightRecorder recording; // depends-on: folder_, clock_
};

std::string reply(RecordedFlight response) {
    return encodeJson(ResponseEnvelope<RecordedFlight>{"catch_up", 7, std::move(response)});
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
    GrowingList<TrackSample> samples;
    for (int i = 0; i < tenHours; ++i)
        samples.append(test::fullSampleAt(i));
    for (auto _ : state)
        benchmark::DoNotOptimize(samples.snapshot());
}

void allIsCopied(benchmark::State& state) {
    const Flight flight;
    for (auto _ : state)
        benchmark::DoNotOptimize(flight.recording.catchUp(std::nullopt));
}

void lastMinuteIsCopied(benchmark::State& state) {
    const Flight flight;
    for (auto _ : state)
        benchmark::DoNotOptimize(flight.recording.catchUp(0.5001 * (tenHours - 120)));
}

void allIsEncoded(benchmark::State& state) {
    const Flight flight;
    const ResponseEnvelope<RecordedFlight> response{"catch_up", 7, flight.recording.catchUp(std::nullopt)};
    std::size_t bytes = 0;
    for (auto _ : state)
        bytes = encodeJson(response).size();
    state.counters["bytes"] = static_cast<double>(bytes);
}

void allIsCopiedAndEncoded(benchmark::State& state) {
    const Flight flight;
    for (auto _ : state)
        benchmark::DoNotOptimize(reply(flight.recording.catchUp(std::nullopt)));
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
            benchmark::DoNotOptimize(reply(flight.recording.catchUp(std::nullopt)));
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
BENCHMARK(sampleIsRecordedWithoutAFile)->Unit(benchmark::kMicrosecond);
BENCHMARK(snapshotIsTaken)->Unit(benchmark::kMicrosecond);
BENCHMARK(allIsCopied)->Unit(benchmark::kMillisecond);
BENCHMARK(lastMinuteIsCopied)->Unit(benchmark::kMillisecond);
BENCHMARK(allIsEncoded)->Unit(benchmark::kMillisecond);
BENCHMARK(allIsCopiedAndEncoded)->Unit(benchmark::kMillisecond);
BENCHMARK(longRecordingIsLetGo)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(sampleIsRecordedBesideCatchUps)->Unit(benchmark::kMicrosecond)->Iterations(2000);

} // namespace
} // namespace tarnly
