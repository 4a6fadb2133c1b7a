#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>

#include "TarnlyCore/Recording/LogLine.hpp"

namespace tarnly {

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
