#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "TarnlyCore/Recording/LogInProgress.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// The recorder thread: writes recordings to their log files, in the order of handing over, so that nobody
/// else waits for a disk.
///
/// What waits for a slow disk is written at once. Every few seconds, and at a recording's end, the disk is
/// made to keep what was written. What a disk does not take is tried again every second, also when the
/// recording has ended, and the next one runs. Whether it answers at all only others can see: `hang`. Owned
/// by the recording; the calls come from any thread and return at once.
class RecordingWriter {
  public:
    using OpenLog = LogInProgress::OpenLog;
    using Tell = LogInProgress::Tell;
    using Batch = LogInProgress::Batch;
    using SharedAccount = LogInProgress::SharedAccount;
    using Pauses = LogInProgress::Pauses;

    /// `tell` is called on the recorder thread, by `hang`, and at the end on the one that ends it.
    explicit RecordingWriter(
        OpenLog openLog = RecordingLog::open, Tell tell = [](const std::string&) {}, Pauses pauses = {});

    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    /// Finishes.
    ~RecordingWriter();

    /// Waits until all is written, or the disk refuses it, for ten seconds at most: a disk that hangs does
    /// not keep the program. Tells what it waits for, and what is lost. Says whether it came to an end;
    /// nothing is to be handed over after that.
    bool finish();

    /// Ends the log before, and opens the next one. How it gets on is told in `account`.
    void begin(std::filesystem::path file, SharedAccount account);

    void write(Batch batch);

    void end();

    /// Has `done` called, on the recorder thread, when all that was handed over before is written, or the
    /// disk has refused it.
    void notify(std::function<void()> done);

    /// Holds `memory` no longer than until its turn comes: to let go of a day of flight takes a while.
    void letGo(std::shared_ptr<const void> memory);

    /// What logs of earlier recordings lack, and the cure: whole sentences.
    std::vector<Phrase> problemsOfEarlier() const;

    /// That the disk does not answer, and the cure, as whole sentences; empty while it does. Who hears it
    /// first has it told, so somebody is to ask now and then.
    Phrase hang() const;

  private:
    class Room;

    /// Shared with the thread, which may have to be left to itself.
    const std::shared_ptr<Room> room_;
    std::thread thread_;
};

} // namespace tarnly
