#include "TarnlyPlatform/Net/LocalSocketFile.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// More than any answer has.
constexpr std::size_t longestAnswer = 1024 * 1024;

[[noreturn]] void fail(const std::filesystem::path& file, int error = errno) {
    throw std::system_error(error, std::generic_category(), file.string());
}

class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    int get() const { return number_; }
    int release() { return std::exchange(number_, -1); }

  private:
    int number_;
};

/// The address of a socket's file. One that is too long for an address is reached by way of its folder.
class FileAddress {
  public:
    explicit FileAddress(const std::filesystem::path& file) {
        auto text = file.string();
        if (text.size() >= sizeof address_.sun_path) {
            folder_ = Descriptor(::open(file.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
            if (folder_.get() < 0) fail(file);
            text = "/proc/self/fd/" + std::to_string(folder_.get()) + "/" + file.filename().string();
        }
        if (text.size() >= sizeof address_.sun_path) fail(file, ENAMETOOLONG);
        address_.sun_family = AF_UNIX;
        std::copy(text.begin(), text.end(), std::begin(address_.sun_path));
    }

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
    static constexpr socklen_t size() { return sizeof(sockaddr_un); }
    const char* path() const { return &address_.sun_path[0]; }

  private:
    Descriptor folder_;
    sockaddr_un address_{};
};

Descriptor newSocket(const std::filesystem::path& file) {
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket.get() < 0) fail(file);
    return socket;
}

/// Held until the process ends, however it does.
Descriptor lockFor(const std::filesystem::path& file) {
    const auto path = file.string() + ".lock";
    Descriptor lock(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (lock.get() < 0) fail(file);
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) fail(file, errno == EWOULDBLOCK ? EADDRINUSE : errno);
    return lock;
}

Descriptor listenAt(const std::filesystem::path& file) {
    auto socket = newSocket(file);
    const FileAddress address(file);
    ::unlink(address.path()); // of one that was killed: the name is ours
    // The file takes the socket's mode over.
    if (::fchmod(socket.get(), S_IRUSR | S_IWUSR) != 0) fail(file);
    if (::bind(socket.get(), address.get(), FileAddress::size()) != 0) fail(file);
    if (::listen(socket.get(), SOMAXCONN) != 0) fail(file);
    return socket;
}

void waitFor(const Descriptor& socket, short events, SteadyClock::time_point deadline,
             const std::filesystem::path& file) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
        if (left.count() <= 0) fail(file, ETIMEDOUT);
        pollfd waiting{socket.get(), events, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(left.count()));
        if (ready > 0) return;
        if (ready < 0 && errno != EINTR) fail(file);
    }
}

void connectTo(const Descriptor& socket, const std::filesystem::path& file,
               SteadyClock::time_point deadline) {
    constexpr int pause = 20;
    const FileAddress address(file);
    while (::connect(socket.get(), address.get(), FileAddress::size()) != 0) {
        if (errno != EAGAIN && errno != EINTR) fail(file);
        // As many wait already as may.
        if (SteadyClock::now() >= deadline) fail(file, ETIMEDOUT);
        ::poll(nullptr, 0, pause);
    }
}

} // namespace

LocalSocketFile::LocalSocketFile(std::filesystem::path file) : file_(std::move(file)) {
    auto lock = lockFor(file_);
    socket_ = listenAt(file_).release();
    lock_ = lock.release();
}

LocalSocketFile::~LocalSocketFile() {
    ::unlink(file_.c_str());
    if (socket_ >= 0) ::close(socket_);
    ::close(lock_);
}

int LocalSocketFile::release() { return std::exchange(socket_, -1); }

std::string readFromLocalSocket(const std::filesystem::path& file, std::chrono::milliseconds limit) {
    const auto deadline = SteadyClock::now() + limit;
    const auto socket = newSocket(file);
    connectTo(socket, file, deadline);
    std::string answer;
    std::array<char, 4096> chunk{};
    while (answer.size() < longestAnswer) {
        waitFor(socket, POLLIN, deadline, file);
        const auto count = ::recv(socket.get(), chunk.data(), chunk.size(), 0);
        if (count == 0) break;
        if (count > 0) answer.append(chunk.data(), static_cast<std::size_t>(count));
        if (count < 0 && errno != EAGAIN && errno != EINTR) fail(file);
    }
    return answer;
}

} // namespace tarnly
