#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnly::client {

/// Why a file could not be read, in the system's words.
class LessonUnreadable : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A text, and the file by which people know it.
struct LessonText {
    std::string file;
    std::string text;
};

/// Where a lesson stands: one file, or a folder. Plain values.
struct LessonFile {
    /// What the lesson says of itself; an empty object for a folder that says nothing.
    LessonText own;
    /// To which the names in it are relative.
    std::filesystem::path folder;
    /// Whether files with the usual names beside it belong to it unasked.
    bool isFolder = false;
    /// For a lesson without a name of its own.
    std::string plainName;
};

/// Of a folder it has lesson.json, or script.json alone. Throws `UsageError` when it cannot be read.
LessonFile readLessonFile(const std::filesystem::path& fileOrFolder);

/// All of a file. Throws `LessonUnreadable`.
std::string readAll(const std::filesystem::path& file);

/// The part of `text` from the JSON value at `begin` to its end, behind blanks in place of what stands before
/// it: so what is said of a line and a column holds for the whole text as well. `text` is valid JSON.
std::string partInPlace(std::string_view text, std::size_t begin);

} // namespace tarnly::client
