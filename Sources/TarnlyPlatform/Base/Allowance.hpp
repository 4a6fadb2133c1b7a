#pragma once

#include <atomic>
#include <cstddef>

namespace tarnly {

/// How many of something there may be in all, shared out among many. Safe from any thread.
class Allowance {
  public:
    explicit Allowance(std::size_t limit) : left_(limit) {}

    /// Says whether there was so much left; takes nothing otherwise.
    bool take(std::size_t amount) {
        auto left = left_.load();
        while (left >= amount) {
            if (left_.compare_exchange_weak(left, left - amount)) return true;
        }
        return false;
    }

    void giveBack(std::size_t amount) { left_ += amount; }

    std::size_t left() const { return left_; }

  private:
    std::atomic<std::size_t> left_;
};

} // namespace tarnly
