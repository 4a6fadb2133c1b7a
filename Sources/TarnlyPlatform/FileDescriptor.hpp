#pragma once

#include <cstddef>
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

  private:
    int number_ = -1;
};

} // namespace tarnly
