#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
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

/// Where a log is written to: the file, or what a test puts in its place.
class LogSink {
  public:
    virtual ~LogSink() = default;

    /// How many bytes of `text` it took: fewer than all when the disk is full or fails.
    virtual std::size_t write(std::string_view text) = 0;

    /// Waits until the disk has what was written.
    virtual void flush() = 0;
};

/// The log file of one recording, open for writing: JSON lines, as docs/recording-format.md describes them.
///
/// Nothing is buffered here: lines have left the process when `append` returns, so that whatever ends the
/// process afterwards cannot take them back. Belongs to the recorder thread.
class RecordingLog {
  public:
    /// For example "session-2026-11-16T010938Z.jsonl": the time in UTC, without the colons, which not every
    /// file system takes.
    static std::string fileName(std::chrono::sys_seconds startTime);

    /// A new empty file, for its owner only, in place of whatever file was there; null when that is not
    /// possible.
    static std::unique_ptr<LogSink> createFile(const std::filesystem::path& file);

    /// `sink` is not null.
    explicit RecordingLog(std::unique_ptr<LogSink> sink) : sink_(std::move(sink)) {}

    /// Writes whole lines, each with its line feed, by one write: between two a kill would tear them apart. A
    /// disk that is full or fails costs these lines and no others.
    void append(std::string_view lines);

    void flush() { sink_->flush(); }

  private:
    void write(std::string_view text);

    std::unique_ptr<LogSink> sink_;
    /// False while the end of the file is a line that could not be written to its end.
    bool endsWithLineFeed_ = true;
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
