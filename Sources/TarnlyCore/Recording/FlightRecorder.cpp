#include "TarnlyCore/Recording/FlightRecorder.hpp"

#include <boost/asio/this_coro.hpp>
#include <exception>
#include <limits>
#include <utility>

#include "TarnlyCore/Recording/FiniteSample.hpp"
#include "TarnlyPlatform/Base/Signal.hpp"
#include "TarnlyPlatform/Base/WithinLimit.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"

namespace tarnly {
namespace {

void increase(std::atomic<std::int64_t>& counter) {
    if (counter == std::numeric_limits<std::int64_t>::max()) std::terminate();
    ++counter;
}

} // namespace

std::chrono::sys_seconds FlightRecorder::systemTime() {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

FlightRecorder::FlightRecorder(std::filesystem::path directory, Clock& clock, WallClock wallClock,
                               RecordingWriter::OpenLog openLog, RecordingWriter::Tell tell)
    : directory_(std::move(directory)),
      clock_(clock),
      wallClock_(std::move(wallClock)),
      writer_(std::move(openLog), std::move(tell)) {
    createPrivateFolders(directory_);
}

// Here and below the writer is handed its work while the lock is held: the order of the log is the order in
// memory. That takes no longer than to append to a queue.

void FlightRecorder::start() {
    auto file = directory_ / RecordingLog::fileName(wallClock_());
    auto account = std::make_shared<Guarded<LogInProgress::Account>>();
    auto track = std::make_shared<Track>();
    state_.with([&](State& state) {
        increase(generation_);
        state.track.swap(track);
        state.account = account;
        state.startTime = clock_.now();
        state.lastSampleTime.reset();
        state.unkept.reset();
        isRecording_ = true;
        writer_.begin(std::move(file), std::move(account));
    });
    writer_.letGo(std::move(track));
}

void FlightRecorder::stop() {
    state_.with([&](State& state) {
        try {
            keepUnkept(state);
        } catch (const std::exception&) {
        }
        isRecording_ = false;
        state.startTime.reset();
        writer_.end();
    });
}

Task<> FlightRecorder::written() {
    const auto executor = co_await boost::asio::this_coro::executor;
    Signal signal(executor);
    writer_.notify(signal.raiser());
    co_await signal.wait();
}

Task<> FlightRecorder::written(Clock::Duration limit) {
    auto writing = written();
    co_await withinLimit(clock_, limit, std::move(writing));
}

std::optional<std::chrono::nanoseconds> FlightRecorder::runningFor() const {
    const auto startTime = state_.with([](const State& state) { return state.startTime; });
    if (!startTime) return std::nullopt;
    return clock_.now() - *startTime;
}

std::optional<FlightRecorder::Progress> FlightRecorder::progress() const {
    RecordingWriter::SharedAccount account;
    auto progress = state_.with([&](const State& state) -> std::optional<Progress> {
        if (!state.startTime) return std::nullopt;
        account = state.account;
        const auto now = clock_.now();
        Progress result{{}, now - *state.startTime, state.track->samples.size(), std::nullopt, {}};
        if (state.lastSampleTime) result.lastSampleAge = now - *state.lastSampleTime;
        return result;
    });
    if (!progress) return progress;
    auto told = account->copy();
    progress->file = std::move(told.file);
    progress->problem = told.problem.empty() ? writer_.hang() : std::move(told.problem);
    return progress;
}

std::vector<Phrase> FlightRecorder::problemsOfEarlier() const {
    auto problems = writer_.problemsOfEarlier();
    if (isRecording_) return problems; // of which it is told then
    auto hang = writer_.hang();
    if (!hang.empty()) problems.push_back(std::move(hang));
    return problems;
}

void FlightRecorder::recordSample(TrackSample sample, std::optional<Clock::TimePoint> takenAt,
                                  const Fire& fire) {
    if (!isRecording_) return;
    state_.with([this](State& state) { keepUnkept(state); });
    sample = withoutNonFinite(std::move(sample));
    auto fired = fire ? fire(sample) : FiredTriggers();
    Moment moment{std::move(sample), takenAt ? *takenAt : clock_.now(), std::move(fired)};
    state_.with([&](State& state) {
        try {
            keep(state, moment);
        } catch (const std::exception&) {
            state.unkept = std::move(moment);
            throw;
        }
    });
    writer_.hang(); // so that it is told
}

void FlightRecorder::keep(State& state, const Moment& moment) {
    auto& [samples, fired] = *state.track;
    fired.makeRoom();
    auto kept = samples.append(moment.sample);
    try {
        writer_.write({std::move(kept), moment.fired});
    } catch (const std::exception&) {
        samples.takeBackLast();
        throw;
    }
    if (!moment.fired.empty()) fired.append(moment.fired);
    state.lastSampleTime = moment.takenAt;
}

void FlightRecorder::keepUnkept(State& state) {
    if (!state.unkept) return;
    keep(state, *state.unkept);
    state.unkept.reset();
}

FlightRecorder::Snapshot FlightRecorder::snapshot() const {
    return state_.with([](const State& state) {
        return Snapshot{state.track->samples.snapshot(), state.track->fired.snapshot()};
    });
}

} // namespace tarnly
