#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "TarnlyCore/Recording/PackedSample.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"
#include "TarnlyCore/Script/FiredTriggers.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

namespace tarnly {

/// The recorder thread: writes recordings to their log files, one after the other, in the order of handing
/// over, so that nobody else waits for a disk.
///
/// What waits for a slow disk shares the memory of its recording: a few dozen bytes a sample. Several samples
/// that wait are written at once. Every few seconds, and at a recording's end, the disk is made to keep what
/// was written. Owned by the recording; the calls come from any thread and return at once.
class RecordingWriter {
  public:
    using OpenLog = std::function<std::unique_ptr<LogSink>(const std::filesystem::path& file)>;

    /// How a file has come to be called; empty while it is not there.
    using FileName = std::shared_ptr<Guarded<std::string>>;

    /// A sample with what fired on it.
    struct Batch {
        PackedSample sample;
        FiredTriggers fired;
    };

    explicit RecordingWriter(OpenLog openLog = RecordingLog::createFile,
                             std::chrono::nanoseconds flushInterval = std::chrono::seconds(5));

    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    /// Waits until all is written, for ten seconds at most: a disk that hangs does not keep the program.
    ~RecordingWriter();

    /// Ends the log before, and opens the next one. Tells its absolute path in `name` when it is there.
    void begin(std::filesystem::path file, FileName name);

    void write(Batch batch);

    void end();

    /// Has `done` called, on the recorder thread, when all that was handed over before is written.
    void notify(std::function<void()> done);

    /// Holds `memory` no longer than until its turn comes: to let go of a day of flight takes a while.
    void letGo(std::shared_ptr<const void> memory);

  private:
    class Room;

    /// Shared with the thread, which may have to be left to itself.
    const std::shared_ptr<Room> room_;
    std::thread thread_;
};

} // namespace tarnly
