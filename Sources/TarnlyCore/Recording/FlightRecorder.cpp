#include "TarnlyCore/Recording/FlightRecorder.hpp"

#include <cstddef>
#include <exception>
#include <limits>
#include <system_error>
#include <utility>
#include <vector>

#include "TarnlyCore/Recording/FiniteSample.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"

namespace tarnly {
namespace {

void increase(std::atomic<std::int64_t>& counter) {
    if (counter == std::numeric_limits<std::int64_t>::max()) std::terminate();
    ++counter;
}

/// Empty where the system cannot tell.
std::string absoluteText(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::absolute(file, error).string();
}

/// Looks at every element: the times need not ascend.
template <typename Snapshot>
auto copyAfter(std::optional<double> since, const Snapshot& recorded) {
    std::vector<std::decay_t<decltype(recorded[0])>> result;
    if (!since) result.reserve(recorded.size());
    for (std::size_t i = 0; i < recorded.size(); ++i) {
        if (!since || recorded[i].elapsedSeconds > *since) result.push_back(recorded[i]);
    }
    return result;
}

} // namespace

std::chrono::sys_seconds FlightRecorder::systemTime() {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

FlightRecorder::FlightRecorder(std::filesystem::path directory, const Clock& clock, WallClock wallClock)
    : directory_(std::move(directory)), clock_(clock), wallClock_(std::move(wallClock)) {
    createPrivateFolders(directory_);
}

void FlightRecorder::start() {
    Track previous; // goes after the lock: to let go of ten hours takes milliseconds
    state_.with([&](State& state) {
        increase(generation_);
        std::swap(previous, state.track);
        state.log.reset();
        const auto file = directory_ / RecordingLog::fileName(wallClock_());
        state.log = RecordingLog::create(file);
        state.file = state.log ? absoluteText(file) : std::string();
        state.startTime = clock_.now();
        state.lastSampleTime.reset();
        isRecording_ = true;
    });
}

void FlightRecorder::stop() {
    state_.with([&](State& state) {
        isRecording_ = false;
        state.startTime.reset();
        state.log.reset();
    });
}

std::optional<std::chrono::nanoseconds> FlightRecorder::runningFor() const {
    const auto startTime = state_.with([](const State& state) { return state.startTime; });
    if (!startTime) return std::nullopt;
    return clock_.now() - *startTime;
}

std::optional<FlightRecorder::Progress> FlightRecorder::progress() const {
    return state_.with([&](const State& state) -> std::optional<Progress> {
        if (!state.startTime) return std::nullopt;
        const auto now = clock_.now();
        Progress result{state.file, now - *state.startTime, state.track.samples.size(), std::nullopt};
        if (state.lastSampleTime) result.lastSampleAge = now - *state.lastSampleTime;
        return result;
    });
}

std::optional<TrackSample> FlightRecorder::recordSample(TrackSample sample,
                                                        std::optional<Clock::TimePoint> takenAt) {
    if (!isRecording_) return std::nullopt;
    sample = withoutNonFinite(std::move(sample));
    state_.with([&](State& state) {
        state.lastSampleTime = takenAt ? *takenAt : clock_.now();
        state.track.samples.append(sample);
        if (state.log) state.log->append(LogLine::of(sample));
    });
    return sample;
}

void FlightRecorder::recordFired(FiredTriggerEvent event) {
    state_.with([&](State& state) {
        state.track.events.append(event);
        if (state.log) state.log->append(LogLine::of(std::move(event)));
    });
}

FlightRecorder::Snapshot FlightRecorder::snapshot() const {
    return state_.with([](const State& state) {
        Snapshot result;
        result.samples_ = state.track.samples.snapshot();
        result.events_ = state.track.events.snapshot();
        return result;
    });
}

RecordedFlight FlightRecorder::Snapshot::after(std::optional<double> since) const {
    return {copyAfter(since, samples_), copyAfter(since, events_)};
}

} // namespace tarnly
