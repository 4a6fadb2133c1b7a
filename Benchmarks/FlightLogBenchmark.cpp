#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyTrack/Export/Export.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"
#include "TarnlyTrack/Log/FlightSummary.hpp"
#include "TarnlyTrack/Plot/PlotPage.hpp"

/// How fast a day's recording is read, beside looking for its line feeds and beside the JSON parser alone,
/// and what is made of it once it is read.
namespace tarnly::track {
namespace {

/// A turn to the right that climbs, with full digits everywhere, as a simulator's values have them.
TrackSample sampleOf(int number) {
    const double turn = number / 200.0;
    TrackSample sample;
    sample.elapsedSeconds = number * 0.5 + std::sin(number) * 0.01;
    sample.lat = 47.4581 + std::sin(turn) * 0.05;
    sample.lon = 8.5481 + std::cos(turn) * 0.05;
    sample.altitudeFt = 3000 + std::sin(turn / 7) * 1500;
    sample.aglFt = *sample.lat * 10;
    sample.gearDown = number % 1000 < 200;
    const double power = 0.5 + std::sin(turn * 3) * 0.4;
    sample.throttleRatio = {power, power};
    sample.mixtureRatio = {1, 1};
    sample.propRatio = {0.9, 0.9};
    sample.flapRatio = 0.25;
    sample.gearRatio = 1;
    sample.bankDeg = 20 + std::sin(turn * 11);
    sample.pitchDeg = 2.5 + std::cos(turn * 13);
    sample.autopilotOn = true;
    return sample;
}

/// 24 hours, twice a second.
const std::string& dayOfFlight() {
    static const std::string text = [] {
        std::string lines;
        for (int number = 0; number < 24 * 60 * 60 * 2; ++number)
            lines += R"({"kind":"sample","sample":)" + encodeJson(sampleOf(number)) + "}\n";
        return lines;
    }();
    return text;
}

template <typename Take>
void forEachLine(std::string_view text, Take take) {
    for (std::size_t feed = text.find('\n'); feed != std::string_view::npos; feed = text.find('\n')) {
        take(text.substr(0, feed));
        text.remove_prefix(feed + 1);
    }
}

void countBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(dayOfFlight().size()));
}

void dayIsRead(benchmark::State& state) {
    const auto& text = dayOfFlight();
    for (auto _ : state) {
        FlightLogReader reader;
        reader.add(text);
        const auto log = reader.finish();
        if (log.size() != 172'800) state.SkipWithError("samples are missing");
    }
    countBytes(state);
}

void dayIsCutIntoLines(benchmark::State& state) {
    const auto& text = dayOfFlight();
    for (auto _ : state) {
        std::size_t lines = 0;
        forEachLine(text, [&](std::string_view) { ++lines; });
        benchmark::DoNotOptimize(lines);
    }
    countBytes(state);
}

void dayIsParsedAsJson(benchmark::State& state) {
    const auto& text = dayOfFlight();
    for (auto _ : state)
        forEachLine(text, [](std::string_view line) { benchmark::DoNotOptimize(parseJson(line)); });
    countBytes(state);
}

const FlightLog& dayAsLog() {
    static const FlightLog log = [] {
        FlightLogReader reader;
        reader.add(dayOfFlight());
        return reader.finish();
    }();
    return log;
}

void dayIsSummed(benchmark::State& state) {
    const auto& log = dayAsLog();
    for (auto _ : state)
        benchmark::DoNotOptimize(summaryOf(log));
}

void dayIsPlotted(benchmark::State& state) {
    const auto& log = dayAsLog();
    for (auto _ : state)
        benchmark::DoNotOptimize(plotPage({plotFlight(log, "day.jsonl", std::nullopt, plotColumns(1))}));
}

/// Counts what it is given.
class NoSink final : public TextSink {
  public:
    void write(std::string_view text) override { bytes += text.size(); }
    void finish() override {}

    std::size_t bytes = 0;
};

void dayIsExported(benchmark::State& state) {
    const auto& log = dayAsLog();
    for (auto _ : state) {
        NoSink sink;
        exportGpx({log, Moment(), "day", std::nullopt, {}}, sink);
        if (sink.bytes == 0) state.SkipWithError("nothing was exported");
    }
}

BENCHMARK(dayIsSummed)->Unit(benchmark::kMillisecond);
BENCHMARK(dayIsPlotted)->Unit(benchmark::kMillisecond);
BENCHMARK(dayIsExported)->Unit(benchmark::kMillisecond);
BENCHMARK(dayIsRead)->Unit(benchmark::kMillisecond);
BENCHMARK(dayIsCutIntoLines)->Unit(benchmark::kMillisecond);
BENCHMARK(dayIsParsedAsJson)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tarnly::track
