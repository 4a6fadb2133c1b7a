#pragma once

#include <algorithm>
#include <chrono>

namespace tarnly::client {

/// How long to wait before each further attempt: twice as long each time, up to a limit. A plain value.
class GrowingPause {
  public:
    using Duration = std::chrono::milliseconds;

    GrowingPause(Duration shortest, Duration longest)
        : shortest_(shortest), longest_(longest), next_(shortest) {}

    Duration next() {
        const auto pause = next_;
        next_ = std::min(2 * next_, longest_);
        return pause;
    }

    /// An attempt has succeeded.
    void reset() { next_ = shortest_; }

  private:
    Duration shortest_;
    Duration longest_;
    Duration next_;
};

} // namespace tarnly::client
