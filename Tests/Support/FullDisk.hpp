#pragma once

#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

namespace tarnly::test {

/// As long as it lives, files of this process grow to `size` bytes and no further: the disk is full.
class FullDisk {
  public:
    explicit FullDisk(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{size, before_.rlim_max};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("no file size limit");
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

  private:
    rlimit before_{};
    void (*handler_)(int);
};

} // namespace tarnly::test
