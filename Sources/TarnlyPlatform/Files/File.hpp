#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarnly {

/// Owns an open file of the operating system, and closes it.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    /// Negative: none.
    explicit FileDescriptor(int number) : number_(number) {}

    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    ~FileDescriptor();

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }

    /// How many bytes of `text` the file took: fewer than all when the disk is full or fails.
    std::size_t write(std::string_view text) const;

    /// All that is left to read; absent when that is more than `limit` bytes or cannot be read.
    std::optional<std::string> readUpTo(std::size_t limit) const;

  private:
    int number_ = -1;
};

/// Opens a regular file, which becomes its owner's only where `flags` have it created. Anything else in its
/// place, such as a pipe, is neither opened nor waited for.
FileDescriptor openPlainFile(const std::filesystem::path& file, int flags);

} // namespace tarnly
