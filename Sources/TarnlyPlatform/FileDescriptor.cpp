#include "TarnlyPlatform/FileDescriptor.hpp"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tarnly {

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
}

FileDescriptor::~FileDescriptor() {
    if (isOpen()) ::close(number_);
}

std::size_t FileDescriptor::write(std::string_view text) const {
    std::size_t written = 0;
    while (written < text.size()) {
        const auto count = ::write(number_, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        written += static_cast<std::size_t>(count);
    }
    return written;
}

} // namespace tarnly
