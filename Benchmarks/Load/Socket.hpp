#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

/// Plain sockets and epoll. The load generator shares no code with the server that it measures, so that
/// neither hides the other's cost. Failures of the system throw `std::system_error`. All addresses are
/// 127.0.0.1.
namespace tarnly::load {

using SteadyClock = std::chrono::steady_clock;

/// A file descriptor that is closed at its end.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor();

    int number() const { return number_; }

  private:
    int number_ = -1;
};

/// Asks for as many descriptors as this process may have.
void raiseDescriptorLimit();

/// Keeps the calling thread on this processor; a negative one leaves it alone.
void pinTo(int processor);

/// A connected socket without Nagle's delay; it blocks until told otherwise.
Descriptor connectTo(std::uint16_t port);

/// A listening socket on any free port.
Descriptor listenAnywhere();
std::uint16_t portOf(const Descriptor& socket);

void stopBlocking(const Descriptor& socket);
void stopDelaying(const Descriptor& socket);

/// Sends all of it over a blocking socket.
void sendAll(const Descriptor& socket, std::string_view bytes);

/// What has come, which fits into `room`; 0 at the end of the stream, -1 when nothing is there.
std::ptrdiff_t receive(const Descriptor& socket, std::span<char> room);

} // namespace tarnly::load
