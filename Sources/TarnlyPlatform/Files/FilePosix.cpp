#include "TarnlyPlatform/Files/File.hpp"

#include <fcntl.h>
#include <sys/stat.h>
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

std::optional<std::string> FileDescriptor::readUpTo(std::size_t limit) const {
    std::string content(limit + 1, '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const auto count = ::read(number_, content.data() + size, content.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    if (size > limit) return std::nullopt;
    content.resize(size);
    return content;
}

FileDescriptor openPlainFile(const std::filesystem::path& file, int flags) {
    FileDescriptor opened(::open(file.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, S_IRUSR | S_IWUSR));
    struct stat status {};
    if (!opened.isOpen() || ::fstat(opened.number(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return opened;
}

} // namespace tarnly
