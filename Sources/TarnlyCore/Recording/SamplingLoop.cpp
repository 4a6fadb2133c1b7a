#include "TarnlyCore/Recording/SamplingLoop.hpp"

#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/this_coro.hpp>
#include <exception>
#include <utility>

namespace tarnly {

namespace asio = boost::asio;

SamplingLoop::SamplingLoop(asio::any_io_executor executor, Clock& clock, std::shared_ptr<SimBackend> backend,
                           std::shared_ptr<FlightRecorder> recording,
                           std::shared_ptr<LoadedScript> loadedScript, PushSubscriptions onPushSubscriptions)
    : clock_(clock),
      backend_(std::move(backend)),
      recording_(std::move(recording)),
      loadedScript_(std::move(loadedScript)),
      onPushSubscriptions_(std::move(onPushSubscriptions)),
      task_(std::move(executor)) {}

void SamplingLoop::start() {
    thread_.check();
    if (std::exchange(isRunning_, true)) return;
    task_.spawn(run(weak_from_this(), clock_), dropFailure);
}

void SamplingLoop::stop() {
    thread_.check();
    task_.cancel();
    isRunning_ = false;
}

Task<> SamplingLoop::run(std::weak_ptr<SamplingLoop> loop, Clock& clock) {
    for (;;) {
        const auto cancellation = co_await asio::this_coro::cancellation_state;
        if (cancellation.cancelled() != asio::cancellation_type::none) co_return;
        const auto alive = loop.lock();
        if (!alive) co_return;
        try {
            co_await alive->tick();
        } catch (const std::exception&) {
            // A tick that fails, for lack of memory say, is one tick lost.
        }
        co_await clock.sleepFor(interval);
    }
}

Task<> SamplingLoop::tick() {
    if (recording_->isRecording()) {
        co_await takeSample();
    }
    // Nothing is pushed to a server that closes.
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    if (cancellation.cancelled() != asio::cancellation_type::none) co_return;
    if (onPushSubscriptions_) onPushSubscriptions_();
}

Task<> SamplingLoop::takeSample() {
    restartClockForNewRecording();
    try {
        auto seen = co_await backend_->getTrackSample();
        // A sample of a recording that was replaced meanwhile would stand in the new one with the old one's
        // time.
        if (recording_->generation() == lastSeenGeneration_) record(std::move(seen.sample));
    } catch (const std::exception&) {
        // The simulator may be there again at the next tick.
    }
}

void SamplingLoop::record(TrackSample sample) {
    sample.elapsedSeconds = elapsedSeconds();
    recording_->recordSample(sample);
    const TriggerSample seen{sample.elapsedSeconds, sample.lat,   sample.lon,
                             sample.altitudeFt,     sample.aglFt, sample.gearDown};
    for (const auto& fired : loadedScript_->evaluate(seen)) {
        recording_->recordFired({fired.triggerId, fired.elapsed, fired.actionKind});
    }
}

void SamplingLoop::restartClockForNewRecording() {
    const auto generation = recording_->generation();
    if (generation == lastSeenGeneration_) return;
    clockStart_ = clock_.now();
    lastSeenGeneration_ = generation;
}

double SamplingLoop::elapsedSeconds() const {
    return std::chrono::duration<double>(clock_.now() - clockStart_).count();
}

} // namespace tarnly
