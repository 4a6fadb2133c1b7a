#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

namespace tarnly {

/// Owns an open regular file, and closes it. Where a call fails, `errno` tells why. Belongs to one thread at
/// a time.
class File {
  public:
    enum class Mode {
        /// For reading what is there.
        read,
        /// For writing a new file, made for its owner only. What is there is left alone, and is a failure.
        create,
        /// For writing to what is there. A link is not followed, and is a failure.
        rewrite
    };

    /// None.
    File() = default;

    /// Anything but a regular file in its place, such as a pipe, is neither opened nor waited for.
    static File open(const std::filesystem::path& path, Mode mode);

    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    ~File();

    bool isOpen() const { return handle_ >= 0; }

    /// How many bytes of `text` the file took: fewer than all when the disk is full or fails.
    std::size_t write(std::string_view text) const;

    /// The same at `place`, in bytes from the start, over what stands there.
    std::size_t writeAt(std::size_t place, std::string_view text) const;

    /// Reads on into `room`, which has some; says how many bytes came, 0 at the end. Absent when it cannot be
    /// read.
    std::optional<std::size_t> readSome(std::span<char> room) const;

    /// All that is left to read; absent when that is more than `limit` bytes or cannot be read.
    std::optional<std::string> readUpTo(std::size_t limit) const;

    /// Waits until the disk has what was written; says whether it has.
    bool flush() const;

    /// The same for what a reader needs, whatever becomes of the file's dates.
    bool flushContent() const;

    /// In bytes; absent where the system does not tell.
    std::optional<std::size_t> size() const;

    /// Whether `path` is a name of this very file.
    bool isAt(const std::filesystem::path& path) const;

    enum class Lock { taken, heldByAnother, impossible };
    /// Asks for the one lock that the file has, without waiting. It is held until the file is closed, or the
    /// process ends, however it does.
    Lock tryLock() const;

    /// Takes other people's access away; says whether nobody else has any now.
    bool closeToOthers() const;

  private:
    friend struct NewFile;
    /// Negative: none.
    explicit File(int handle) : handle_(handle) {}

    int handle_ = -1;
};

/// A file that has just been made, for its owner only.
struct NewFile {
    std::filesystem::path path;
    File file;

    /// A hidden one in the folder of `target`, thus on its file system, under a name that nothing had. Throws
    /// `std::system_error`.
    static NewFile beside(const std::filesystem::path& target);
};

/// Makes the folder for its owner only; nothing where it is there already or cannot be made.
void createPrivateFolder(const std::filesystem::path& folder);

/// Why nothing can be made in `folder`, or where it is missing in the nearest one above it; clear where that
/// can be, as far as permissions tell.
std::error_code whyUnwritable(const std::filesystem::path& folder);

/// Waits until the disk has the names in `folder`, where it can.
void flushFolder(const std::filesystem::path& folder);

/// Has a write fail, and not end the process, that would take a file beyond what the process may write, as on
/// a full disk, or goes to a pipe that nobody reads any more. For the whole process, from now on.
void failRatherThanEnd();

/// Removes a file or a link, never a folder. No error where there is none.
std::error_code removeFile(const std::filesystem::path& file);

/// When the file was changed last, to a microsecond, in whatever year file systems know. Of a link its own
/// date, so that one that leads nowhere has one. Throws `std::filesystem::filesystem_error`.
std::chrono::sys_time<std::chrono::duration<double>> modificationTime(const std::filesystem::path& path);

} // namespace tarnly
