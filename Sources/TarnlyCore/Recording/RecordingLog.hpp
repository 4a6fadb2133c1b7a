#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "TarnlyCore/Flight/TrackSample.hpp"

namespace tarnly {

/// One line of a recording's log: a sample or a fired trigger, told apart by `kind`. A plain value.
struct LogLine {
    static constexpr std::string_view sampleKind = "sample";
    static constexpr std::string_view firedKind = "fired";

    std::string kind;
    std::optional<TrackSample> sample;
    std::optional<FiredTriggerEvent> fired;

    static LogLine of(TrackSample sample);
    static LogLine of(FiredTriggerEvent event);

    /// Whether the line holds the record that its kind promises. Of a kind unknown here nothing is asked.
    bool isComplete() const;

    bool operator==(const LogLine&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("kind", &LogLine::kind), field("sample", &LogLine::sample),
                          field("fired", &LogLine::fired));
    }
};

/// Where a log is written to: the file, or what a test puts in its place. Belongs to the recorder thread.
class LogSink {
  public:
    virtual ~LogSink() = default;

    /// Writes `text` at `place`, in bytes from the log's start, over what an attempt before may have left
    /// there. After an error any part of it may stand there.
    virtual std::error_code write(std::size_t place, std::string_view text) = 0;

    /// Waits until the disk has what was written.
    virtual std::error_code flush() = 0;

    /// Whether the log still stands where it was opened, with `size` bytes at least.
    virtual bool isInPlace(std::size_t size) const = 0;
};

/// A log that is open for writing, or why there is none.
struct OpenedLog {
    /// Null after an error.
    std::unique_ptr<LogSink> sink;
    /// The path that it has got, or should have.
    std::filesystem::path file;
    std::error_code error;
};

enum class MissingFolder { make, leave };

/// The file of a recording: JSON lines, as docs/recording-format.md describes them.
struct RecordingLog {
    /// For example "session-2026-11-16T010938Z.jsonl": the time in UTC, without the colons, which not every
    /// file system takes.
    static std::string fileName(std::chrono::sys_seconds startTime);

    /// An empty file, for its owner only: a new one, or one of that name that is empty and in nobody's use.
    /// Where there is another, which is never touched, the name gets a number: "session-…Z-2.jsonl".
    ///
    /// Nothing is buffered: what is written has left the process, so that whatever ends it afterwards cannot
    /// take it back.
    static OpenedLog open(const std::filesystem::path& file, MissingFolder missing);
};

/// Reads a recording's log line by line, from a stream that outlives the reader.
///
/// Lines that are no log lines are passed over: a full disk may have cut lines short anywhere, a sudden end
/// of the recording program the last one. Not for use by several threads at once.
class RecordingLogReader {
  public:
    explicit RecordingLogReader(std::istream& log) : log_(log) {}

    /// The next line that can be read; absent at the end. Lines of a kind that is unknown here come with
    /// neither `sample` nor `fired`.
    std::optional<LogLine> next();

    /// How many lines were passed over so far, the torn end not counted.
    std::size_t unreadableLines() const { return unreadableLines_; }

    /// Whether the log ends within a line that was being written.
    bool hasTornEnd() const { return hasTornEnd_; }

  private:
    std::istream& log_;
    std::size_t unreadableLines_ = 0;
    bool hasTornEnd_ = false;
};

} // namespace tarnly
