#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Recording/GrowingList.hpp"
#include "TarnlyCore/Recording/RecordingWriter.hpp"
#include "TarnlyCore/Recording/SampleList.hpp"
#include "TarnlyCore/Script/FiredTriggers.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// The flight track of the current recording: the samples and the fired triggers, in memory for clients that
/// reconnect, and line by line in a log file.
///
/// One per host, shared by the sessions and the sampling loop. Safe from any thread. The order of the log is
/// the order in memory; the recorder thread writes it, behind which nobody here waits. Nothing here fails: a
/// recording whose file cannot be written goes on in memory, from which the file is completed later.
class FlightRecorder {
  public:
    /// Tells the time in UTC.
    using WallClock = std::function<std::chrono::sys_seconds()>;

    static std::chrono::sys_seconds systemTime();

    /// Creates `directory`, with the folders above it, for its owner only where they are missing.
    /// `clock` tells for how long a recording has been running; it outlives the recorder. `tell` hears when a
    /// log cannot be written, and when it can again; it is called from other threads.
    FlightRecorder(
        std::filesystem::path directory, Clock& clock, WallClock wallClock = systemTime,
        RecordingWriter::OpenLog openLog = RecordingLog::open,
        RecordingWriter::Tell tell = [](const std::string&) {});

    FlightRecorder(const FlightRecorder&) = delete;
    FlightRecorder& operator=(const FlightRecorder&) = delete;

    /// Begins a new, empty recording with a new log file, whether one was running or not.
    void start();

    /// What was recorded stays until the next start.
    void stop();

    /// Waits until all that was recorded so far stands in its file, or the disk has refused it; for `limit`
    /// at most. The recorder outlives the waiting.
    Task<> written();
    Task<> written(Clock::Duration limit);

    /// Waits until the disk has all that was recorded, for ten seconds at most: see `RecordingWriter`. For a
    /// program that ends; destruction does the same.
    void finish() { writer_.finish(); }

    /// Tells what fires on a sample.
    using Fire = std::function<FiredTriggers(const TrackSample& recorded)>;

    /// Records the sample, all of it but values that are not finite numbers, with what `fire` tells of it.
    /// Outside a recording nothing is, and `fire` is not asked. `takenAt` is now when it is absent.
    ///
    /// Throws for lack of memory. What has fired is not lost by that: the next call, or the end, records it
    /// with its sample before anything else.
    void recordSample(TrackSample sample, std::optional<Clock::TimePoint> takenAt = std::nullopt,
                      const Fire& fire = nullptr);

    /// What stood recorded at one moment: never a sample without the triggers that fired on it. May be read
    /// by any thread while the recording goes on.
    struct Snapshot {
        SampleList::Snapshot samples;
        /// Of each sample on which something fired.
        GrowingList<FiredTriggers>::Snapshot fired;
    };

    /// Takes microseconds, however long the recording.
    Snapshot snapshot() const;

    bool isRecording() const { return isRecording_; }

    /// For how long the recording has been running; absent outside a recording.
    std::optional<std::chrono::nanoseconds> runningFor() const;

    /// How the running recording gets on.
    struct Progress {
        /// The absolute path of the log; empty when none could be made, or has not been yet.
        std::string file;
        std::chrono::nanoseconds runningFor;
        std::size_t samples;
        /// Absent before the first one.
        std::optional<std::chrono::nanoseconds> lastSampleAge;
        /// Why the log is not being written, and the cure: whole sentences. Empty while all is well.
        Phrase problem;
    };

    /// Absent outside a recording.
    std::optional<Progress> progress() const;

    /// What logs of earlier recordings lack, and the cure: whole sentences.
    std::vector<Phrase> problemsOfEarlier() const;

    /// How many times a recording was started.
    std::int64_t generation() const { return generation_; }

    const std::filesystem::path& directory() const { return directory_; }

  private:
    struct Track {
        SampleList samples;
        GrowingList<FiredTriggers> fired;
    };

    struct Moment {
        TrackSample sample;
        Clock::TimePoint takenAt;
        FiredTriggers fired;
    };

    struct State {
        /// Never null.
        std::shared_ptr<Track> track = std::make_shared<Track>();
        /// Absent outside a recording.
        std::optional<Clock::TimePoint> startTime;
        /// Of the present or the last recording.
        RecordingWriter::SharedAccount account;
        /// When the last sample was taken.
        std::optional<Clock::TimePoint> lastSampleTime;
        /// For which there was no memory.
        std::optional<Moment> unkept;
    };

    /// All of it, or nothing where it throws.
    void keep(State& state, const Moment& moment);
    void keepUnkept(State& state);

    const std::filesystem::path directory_;
    Clock& clock_;
    const WallClock wallClock_;
    RecordingWriter writer_;
    // depends-on: writer_
    Guarded<State> state_;
    // Written with the lock of `state_` held, read without: a sample that arrives during a start or a stop
    // may be taken or dropped.
    std::atomic<bool> isRecording_{false};
    std::atomic<std::int64_t> generation_{0};
};

} // namespace tarnly
