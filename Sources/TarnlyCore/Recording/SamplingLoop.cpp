#include "TarnlyCore/Recording/SamplingLoop.hpp"

#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/this_coro.hpp>
#include <cmath>
#include <exception>
#include <optional>
#include <utility>

#include "TarnlyPlatform/Base/WithinLimit.hpp"

namespace tarnly {

namespace asio = boost::asio;

SamplingLoop::SamplingLoop(asio::any_io_executor executor, Clock& clock, std::shared_ptr<SimBackend> backend,
                           std::shared_ptr<FlightRecorder> recording,
                           std::shared_ptr<LoadedScript> loadedScript, PushSubscriptions onPushSubscriptions,
                           TickBegins onTickBegins, IsNeeded isNeeded)
    : clock_(clock),
      backend_(std::move(backend)),
      recording_(std::move(recording)),
      loadedScript_(std::move(loadedScript)),
      onPushSubscriptions_(std::move(onPushSubscriptions)),
      onTickBegins_(std::move(onTickBegins)),
      isNeeded_(std::move(isNeeded)),
      woken_(executor),
      task_(std::move(executor)) {}

void SamplingLoop::start() {
    thread_.check();
    if (std::exchange(isRunning_, true)) return;
    task_.keepUp([weak = weak_from_this(), &clock = clock_] { return run(weak, clock); });
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
        if (alive->isNeeded_ && !alive->isNeeded_()) {
            if (alive->onTickBegins_) alive->onTickBegins_(); // who was there may have left meanwhile
            co_await rest(alive);
        } else {
            co_await clock.sleepFor(interval);
        }
    }
}

Task<> SamplingLoop::rest(std::shared_ptr<SamplingLoop> loop) { co_await loop->woken_.wait(); }

void SamplingLoop::wake() {
    thread_.check();
    woken_.notifyAll();
}

Task<> SamplingLoop::tick() {
    if (onTickBegins_) onTickBegins_();
    if (recording_->isRecording()) {
        co_await takeSample();
    }
    // Nothing is pushed to a server that closes.
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    if (cancellation.cancelled() != asio::cancellation_type::none) co_return;
    if (onPushSubscriptions_) onPushSubscriptions_();
}

Task<> SamplingLoop::takeSample() {
    restartForNewRecording();
    recordProven();
    try {
        auto sight = look(backend_);
        auto seen = co_await withinLimit(clock_, sampleLimit, std::move(sight));
        // A sample of a recording that was replaced meanwhile would stand in the new one with the old one's
        // time.
        if (!seen || recording_->generation() != lastSeenGeneration_) co_return;
        held_.add(std::move(*seen));
    } catch (const std::exception&) {
        // The simulator may be there again at the next tick.
        co_return;
    }
    recordProven();
}

// Holds the backend, since a look that takes too long is left to itself until it notices.
Task<SampleObservation> SamplingLoop::look(std::shared_ptr<SimBackend> backend) {
    co_return co_await backend->getTrackSample();
}

void SamplingLoop::recordProven() {
    const auto isProven = [this](std::int64_t link, Clock::TimePoint moment) {
        return backend_->isProven(link, moment);
    };
    for (const auto& seen : held_.takeProven(isProven, clock_.now()))
        record(seen);
}

void SamplingLoop::record(const SampleObservation& seen) {
    auto sample = seen.sample;
    sample.elapsedSeconds = elapsedSeconds(seen.takenAt);
    const bool isAltitudeKnown = seen.isAltitudeKnown && std::isfinite(sample.altitudeFt);
    const auto fire = [&](const TrackSample& recorded) {
        return loadedScript_->evaluate(
            {.elapsed = recorded.elapsedSeconds,
             .lat = recorded.lat,
             .lon = recorded.lon,
             .altFt = isAltitudeKnown ? std::optional(recorded.altitudeFt) : std::nullopt,
             .aglFt = recorded.aglFt,
             .gearDown = recorded.gearDown,
             .link = seen.link});
    };
    recording_->recordSample(std::move(sample), seen.takenAt, fire);
}

void SamplingLoop::restartForNewRecording() {
    const auto generation = recording_->generation();
    if (generation == lastSeenGeneration_) return;
    clockStart_ = clock_.now();
    lastSeenGeneration_ = generation;
    held_.clear();
}

double SamplingLoop::elapsedSeconds(Clock::TimePoint moment) const {
    return std::chrono::duration<double>(moment - clockStart_).count();
}

} // namespace tarnly
