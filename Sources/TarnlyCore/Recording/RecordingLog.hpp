#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "TarnlyCore/Recording/LogLine.hpp"
#include "TarnlyPlatform/Files/FileDescriptor.hpp"

namespace tarnly {

/// The log file of one recording, open for writing: JSON lines, as docs/recording-format.md describes them.
///
/// Nothing is buffered here: a line has left the process when `append` returns, so that whatever ends the
/// process afterwards cannot take it back. Belongs to the recording, which serialises its use.
class RecordingLog {
  public:
    /// For example "session-2026-11-16T010938Z.jsonl": the time in UTC, without the colons, which not every
    /// file system takes.
    static std::string fileName(std::chrono::sys_seconds startTime);

    /// A new empty file, for its owner only, in place of whatever file was there; absent when that is not
    /// possible.
    static std::optional<RecordingLog> create(const std::filesystem::path& file);

    /// Writes the line and its line feed. A line that has no JSON form (a number in it is not finite) is left
    /// out; a disk that is full or fails costs this line and no other.
    void append(const LogLine& line);

  private:
    explicit RecordingLog(FileDescriptor file) : file_(std::move(file)) {}

    void write(std::string_view text);

    FileDescriptor file_;
    /// False while the end of the file is a line that could not be written to its end.
    bool endsWithLineFeed_ = true;
};

} // namespace tarnly
