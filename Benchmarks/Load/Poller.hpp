#pragma once

#include <sys/epoll.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <span>
#include <system_error>

#include "Socket.hpp"

namespace tarnly::load {

/// The one event loop that the generator and the raw echo share: epoll, told of each change once (edge
/// triggered), so that writing costs no registration.
class Poller {
  public:
    Poller() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {}

    /// From now on `wait` says so, by `thing`, when something can be read or written.
    void watch(const Descriptor& socket, void* thing) {
        epoll_event event{};
        event.events = EPOLLIN | EPOLLOUT | EPOLLRDHUP | EPOLLET;
        event.data.ptr = thing;
        if (epoll_ctl(epoll_.number(), EPOLL_CTL_ADD, socket.number(), &event) < 0)
            throw std::system_error(errno, std::generic_category(), "epoll_ctl");
    }

    /// What has become ready, within `limit` (negative: without limit); empty when nothing has.
    std::span<const epoll_event> wait(std::chrono::milliseconds limit) {
        const int count = epoll_wait(epoll_.number(), ready_.data(), static_cast<int>(ready_.size()),
                                     static_cast<int>(limit.count()));
        if (count < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "epoll_wait");
        return {ready_.data(), count < 0 ? 0u : static_cast<std::size_t>(count)};
    }

  private:
    Descriptor epoll_;
    std::array<epoll_event, 512> ready_;
};

} // namespace tarnly::load
