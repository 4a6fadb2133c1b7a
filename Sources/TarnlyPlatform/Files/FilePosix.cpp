#include "TarnlyPlatform/Files/File.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace tarnly {
namespace {

int flagsFor(File::Mode mode) {
    switch (mode) {
        case File::Mode::read:
            return O_RDONLY;
        case File::Mode::create:
            return O_WRONLY | O_CREAT | O_EXCL;
        case File::Mode::rewrite:
            return O_WRONLY | O_NOFOLLOW;
    }
    return O_RDONLY;
}

std::error_code lastError() { return {errno, std::generic_category()}; }

} // namespace

File File::open(const std::filesystem::path& path, Mode mode) {
    constexpr int neverWaits = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    File opened(::open(path.c_str(), flagsFor(mode) | neverWaits, S_IRUSR | S_IWUSR));
    struct stat status {};
    if (!opened.isOpen() || ::fstat(opened.handle_, &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return opened;
}

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}

File& File::operator=(File&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

File::~File() {
    if (isOpen()) ::close(handle_);
}

std::size_t File::write(std::string_view text) const {
    std::size_t written = 0;
    while (written < text.size()) {
        const auto count = ::write(handle_, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count == 0) errno = ENOSPC; // as some devices tell it
        if (count <= 0) break;
        written += static_cast<std::size_t>(count);
    }
    return written;
}

std::size_t File::writeAt(std::size_t place, std::string_view text) const {
    if (::lseek(handle_, static_cast<off_t>(place), SEEK_SET) < 0) return 0;
    return write(text);
}

std::optional<std::size_t> File::readSome(std::span<char> room) const {
    for (;;) {
        const auto count = ::read(handle_, room.data(), room.size());
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) return std::nullopt;
    }
}

std::optional<std::string> File::readUpTo(std::size_t limit) const {
    std::string content(limit + 1, '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const auto count = readSome(std::span(content).subspan(size));
        if (!count) return std::nullopt;
        if (*count == 0) break;
        size += *count;
    }
    if (size > limit) return std::nullopt;
    content.resize(size);
    return content;
}

bool File::flush() const { return ::fsync(handle_) == 0; }

bool File::flushContent() const { return ::fdatasync(handle_) == 0; }

std::optional<std::size_t> File::size() const {
    struct stat status {};
    if (::fstat(handle_, &status) != 0) return std::nullopt;
    return static_cast<std::size_t>(status.st_size);
}

bool File::isAt(const std::filesystem::path& path) const {
    struct stat mine {};
    struct stat there {};
    if (::fstat(handle_, &mine) != 0) return true;
    if (::stat(path.c_str(), &there) != 0) return errno != ENOENT && errno != ENOTDIR;
    return mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

File::Lock File::tryLock() const {
    if (::flock(handle_, LOCK_EX | LOCK_NB) == 0) return Lock::taken;
    return errno == EWOULDBLOCK ? Lock::heldByAnother : Lock::impossible;
}

bool File::closeToOthers() const {
    struct stat status {};
    if (::fstat(handle_, &status) != 0) return false;
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return true;
    return ::fchmod(handle_, status.st_mode & S_IRWXU) == 0;
}

NewFile NewFile::beside(const std::filesystem::path& target) {
    auto name = (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
    File file(::mkostemp(name.data(), O_CLOEXEC));
    if (!file.isOpen()) throw std::system_error(lastError());
    return {name, std::move(file)};
}

void createPrivateFolder(const std::filesystem::path& folder) { ::mkdir(folder.c_str(), S_IRWXU); }

std::error_code whyUnwritable(const std::filesystem::path& folder) {
    auto nearest = std::filesystem::absolute(folder);
    while (::access(nearest.c_str(), F_OK) != 0 && errno == ENOENT && nearest.has_relative_path())
        nearest = nearest.parent_path();
    return ::access(nearest.c_str(), W_OK | X_OK) == 0 ? std::error_code() : lastError();
}

void flushFolder(const std::filesystem::path& folder) {
    const auto* const path = folder.empty() ? "." : folder.c_str();
    const int handle = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    ::fsync(handle);
    ::close(handle);
}

void failRatherThanEnd() {
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

std::error_code removeFile(const std::filesystem::path& file) {
    if (::unlink(file.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR) return {};
    return lastError();
}

std::chrono::sys_time<std::chrono::duration<double>> modificationTime(const std::filesystem::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        throw std::filesystem::filesystem_error("cannot read attributes", path, lastError());
    using Seconds = std::chrono::duration<double>;
    const Seconds whole(static_cast<double>(status.st_mtim.tv_sec));
    const Seconds rest = std::chrono::nanoseconds(status.st_mtim.tv_nsec);
    return std::chrono::sys_time<Seconds>(whole + rest);
}

} // namespace tarnly
