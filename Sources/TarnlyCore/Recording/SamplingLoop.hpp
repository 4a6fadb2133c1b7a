#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Recording/HeldSamples.hpp"
#include "TarnlyCore/Script/LoadedScript.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"

namespace tarnly {

/// The core's heartbeat: twice a second it has the subscribed dataref values pushed, and while a recording
/// runs it takes a sample of the flight, records it, and lets the script in force fire its triggers.
///
/// A sample is recorded, and seen by the script, once it is proven that the simulator was alive when it was
/// taken: at once while the aircraft flies, a little later or never otherwise.
///
/// While nobody needs it, the loop rests, and nothing wakes the computer for it. The wait follows the tick,
/// so ticks never overlap. No failure ends the loop: a sample that cannot be had is skipped, and so is one
/// that is not there within `sampleLimit`. Started and stopped by the host. Belongs to the network thread;
/// its task holds the loop while a tick is under way or waited for.
class SamplingLoop : public std::enable_shared_from_this<SamplingLoop> {
  public:
    static constexpr std::chrono::nanoseconds interval{500'000'000};
    static constexpr Clock::Duration sampleLimit = std::chrono::seconds(2);

    /// Asks for the pushes and does not wait for them.
    using PushSubscriptions = std::function<void()>;

    /// Called as a tick begins, before anything is waited for.
    using TickBegins = std::function<void()>;

    /// Whether there is anybody to push to, or a recording.
    using IsNeeded = std::function<bool()>;

    /// `clock` must outlive all that runs on `executor`. Without `isNeeded` the loop never rests.
    SamplingLoop(boost::asio::any_io_executor executor, Clock& clock, std::shared_ptr<SimBackend> backend,
                 std::shared_ptr<FlightRecorder> recording, std::shared_ptr<LoadedScript> loadedScript,
                 PushSubscriptions onPushSubscriptions, TickBegins onTickBegins = nullptr,
                 IsNeeded isNeeded = nullptr);

    /// Does nothing when the loop runs already. A loop that is started again within one recording goes on
    /// with that recording's clock.
    void start();

    /// Has a loop that rests begin a tick at once: it may be needed now.
    void wake();

    /// Does not wait for a tick under way. Harmless when the loop does not run.
    void stop();

  private:
    static Task<> run(std::weak_ptr<SamplingLoop> loop, Clock& clock);
    static Task<> rest(std::shared_ptr<SamplingLoop> loop);
    Task<> tick();
    Task<> takeSample();
    static Task<SampleObservation> look(std::shared_ptr<SimBackend> backend);
    void recordProven();
    void record(const SampleObservation& seen);
    void restartForNewRecording();
    double elapsedSeconds(Clock::TimePoint moment) const;

    // Constant after construction
    Clock& clock_;
    const std::shared_ptr<SimBackend> backend_;
    const std::shared_ptr<FlightRecorder> recording_;
    const std::shared_ptr<LoadedScript> loadedScript_;
    const PushSubscriptions onPushSubscriptions_;
    const TickBegins onTickBegins_;
    const IsNeeded isNeeded_;

    OnOneThread thread_;
    Event woken_;
    TaskGroup task_;
    bool isRunning_ = false;
    /// When the present recording's clock read 0.
    Clock::TimePoint clockStart_{};
    /// The recording that `clockStart_` belongs to.
    std::int64_t lastSeenGeneration_ = -1;
    /// Of the present recording.
    HeldSamples held_;
};

} // namespace tarnly
