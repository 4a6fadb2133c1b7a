#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Recording/GrowingList.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

namespace tarnly {

/// The flight track of the current recording: the samples and the fired triggers, in memory for clients that
/// reconnect, and line by line in a log file.
///
/// One per host, shared by the sessions and the sampling loop. Safe from any thread. The order of the log is
/// the order in memory. Nothing here fails: a recording whose file cannot be written goes on in memory.
class FlightRecorder {
  public:
    /// Tells the time in UTC.
    using WallClock = std::function<std::chrono::sys_seconds()>;

    static std::chrono::sys_seconds systemTime();

    /// Creates `directory`, with the folders above it, for its owner only where they are missing.
    /// `clock` tells for how long a recording has been running; it outlives the recorder.
    FlightRecorder(std::filesystem::path directory, const Clock& clock, WallClock wallClock = systemTime);

    FlightRecorder(const FlightRecorder&) = delete;
    FlightRecorder& operator=(const FlightRecorder&) = delete;

    /// Begins a new, empty recording with a new log file, whether one was running or not. A recording that
    /// was started within the same second loses its file to the new one.
    void start();

    /// What was recorded stays until the next start.
    void stop();

    /// What was recorded of the sample: all of it but values that are not finite numbers. Outside a recording
    /// nothing is, and the answer is absent. `takenAt` is now when it is absent.
    std::optional<TrackSample> recordSample(TrackSample sample,
                                            std::optional<Clock::TimePoint> takenAt = std::nullopt);

    /// Outside a recording the event is kept in memory only.
    void recordFired(FiredTriggerEvent event);

    /// What stood recorded at one moment. May be read by any thread while the recording goes on.
    class Snapshot {
      public:
        /// Copies of the samples and events whose time is after `since`, in seconds, strictly; of all when it
        /// is absent. Of ten hours that is some milliseconds' work.
        RecordedFlight after(std::optional<double> since) const;

      private:
        friend class FlightRecorder;
        GrowingList<TrackSample>::Snapshot samples_;
        GrowingList<FiredTriggerEvent>::Snapshot events_;
    };

    /// Takes microseconds, however long the recording. Taken on the thread that records, it never has a
    /// sample without the triggers that fired on it.
    Snapshot snapshot() const;

    RecordedFlight catchUp(std::optional<double> since) const { return snapshot().after(since); }

    bool isRecording() const { return isRecording_; }

    /// For how long the recording has been running; absent outside a recording.
    std::optional<std::chrono::nanoseconds> runningFor() const;

    /// How the running recording gets on.
    struct Progress {
        /// The absolute path of the log; empty when none could be made.
        std::string file;
        std::chrono::nanoseconds runningFor;
        std::size_t samples;
        /// Absent before the first one.
        std::optional<std::chrono::nanoseconds> lastSampleAge;
    };

    /// Absent outside a recording.
    std::optional<Progress> progress() const;

    /// How many times a recording was started.
    std::int64_t generation() const { return generation_; }

    const std::filesystem::path& directory() const { return directory_; }

  private:
    struct Track {
        GrowingList<TrackSample> samples;
        GrowingList<FiredTriggerEvent> events;
    };

    struct State {
        Track track;
        /// Absent outside a recording, and when the file could not be created.
        std::optional<RecordingLog> log;
        /// Absent outside a recording.
        std::optional<Clock::TimePoint> startTime;
        /// The log's path; empty where there is no log.
        std::string file;
        /// When the last sample was taken.
        std::optional<Clock::TimePoint> lastSampleTime;
    };

    const std::filesystem::path directory_;
    const Clock& clock_;
    const WallClock wallClock_;
    Guarded<State> state_;
    // Written with the lock of `state_` held, read without: a sample that arrives during a start or a stop
    // may be taken or dropped.
    std::atomic<bool> isRecording_{false};
    std::atomic<std::int64_t> generation_{0};
};

} // namespace tarnly
