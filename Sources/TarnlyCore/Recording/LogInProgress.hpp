#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "TarnlyCore/Recording/PackedSample.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"
#include "TarnlyCore/Script/FiredTriggers.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// One recording's log on its way to the disk, whatever the disk does.
///
/// All that belongs to it stays at hand until the log is whole and closed, in the memory of the recording: 16
/// bytes more a sample. So nothing is lost that the disk does not take: it is tried again, from the last line
/// that stands whole, and where the file has gone it is made anew from the recording's beginning. The lines
/// stand in the log once each, whole and in order, however often that happens.
///
/// Belongs to the recorder thread. Nothing here fails.
class LogInProgress {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using OpenLog = std::function<OpenedLog(const std::filesystem::path& file, MissingFolder missing)>;
    /// Told what is worth a person's notice: whole sentences.
    using Tell = std::function<void(const std::string& text)>;

    /// A sample with what fired on it.
    struct Batch {
        PackedSample sample;
        FiredTriggers fired;
    };

    struct Pauses {
        /// From the first line that may be lost by a power cut until the disk is made to keep it.
        std::chrono::nanoseconds flush = std::chrono::seconds(5);
        /// Between two tries on a disk that takes nothing.
        std::chrono::nanoseconds retry = std::chrono::seconds(1);
        /// From the last look at the file until the next, where nothing is written meanwhile.
        std::chrono::nanoseconds look = std::chrono::seconds(2);
        /// After so long a call to the disk hangs.
        std::chrono::nanoseconds hang = std::chrono::seconds(5);
    };

    /// What others are told of it.
    struct Account {
        /// The absolute path; empty while there is no file.
        std::string file;
        /// Why it is not being written, and the cure: whole sentences. Empty while all is well.
        Phrase problem;
    };
    using SharedAccount = std::shared_ptr<Guarded<Account>>;

    /// `flushing` is for tests that have one thread.
    LogInProgress(OpenLog openLog, std::filesystem::path file, SharedAccount account, Pauses pauses,
                  Tell tell, std::launch flushing = std::launch::async);

    /// Adds all of it, or nothing where it throws for lack of memory.
    void add(const Batch& batch);

    /// Nothing is added any more.
    void end() { isEnding_ = true; }
    bool isEnding() const { return isEnding_; }

    enum class Patience { pauses, none };

    /// Opens the log, if need be, and writes what is not written yet: one write, whole lines, where the disk
    /// takes it. After a failure not before the pause is over, unless there is no patience.
    void write(TimePoint now, Patience patience = Patience::pauses);

    /// Has the disk keep what was written, when that is due, or the log ends. Until it ends, that happens on
    /// a thread of its own: the lines to come are written meanwhile.
    void flushWhenDue(TimePoint now, Patience patience = Patience::pauses);

    /// Whether it ends, and the disk has it all.
    bool isWhole() const;

    /// When it is to be looked after, written or flushed again, though nothing is added; absent where that
    /// need not be.
    std::optional<TimePoint> due() const;

    /// Empty while all is well.
    Phrase problem() const;

    /// That a log is not being written, as whole sentences.
    static Phrase problemText(const std::filesystem::path& file, const Phrase& cause, const Phrase& cure);

    /// That it is again.
    static std::string recoveredText(const std::filesystem::path& file);

    /// Tells that what is not written will not be, if there is any.
    void giveUp();

  private:
    /// How far the log has come.
    struct Mark {
        /// Of samples.
        std::size_t count = 0;
        /// In bytes.
        std::size_t size = 0;
        /// Of the samples on which something fired.
        std::size_t firedCount = 0;
    };
    struct Fired {
        /// The sample's number.
        std::size_t sample;
        FiredTriggers triggers;
    };
    struct Flushing {
        Mark from;
        Mark upTo;
        TimePoint begun;
        std::future<std::error_code> outcome;
    };
    struct Trouble {
        Phrase cause;
        Phrase cure;
    };

    bool waits(TimePoint now, Patience patience) const;
    bool isUpToDate() const { return written_.count == samples_.size(); }
    bool open(TimePoint now);
    bool writeLines(TimePoint now);
    std::string encodeFrom(Mark& mark) const;
    void appendLines(std::string& lines, Mark& mark) const;
    bool flush(TimePoint now);
    void beginFlush(TimePoint now);
    bool isFlushing() const;
    bool takeFlushed(TimePoint now);
    void beginAnew();
    void fail(const std::error_code& error, TimePoint now);
    void failWithoutFile(TimePoint now);
    void fail(const Trouble& trouble, TimePoint now);
    void recover();

    // Constant after construction
    const OpenLog openLog_;
    const std::filesystem::path wantedFile_;
    const SharedAccount account_;
    const Pauses pauses_;
    const Tell tell_;
    const std::launch flushing_;

    std::filesystem::path file_;
    std::deque<PackedSample> samples_;
    std::deque<Fired> fired_;
    bool isEnding_ = false;

    bool wasOpened_ = false;
    std::shared_ptr<LogSink> sink_;
    TimePoint lookDue_{};
    Mark written_;
    /// What a power cut does not take.
    Mark safe_;
    TimePoint flushDue_{};
    std::optional<Flushing> underWay_;
    /// Present while it is in trouble.
    std::optional<TimePoint> retryDue_;
};

} // namespace tarnly
