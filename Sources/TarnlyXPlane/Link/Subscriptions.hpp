#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <unordered_map>
#include <vector>

#include "TarnlyPlatform/Base/Clock.hpp"

namespace tarnly {

/// Which datarefs a link has been asked to send, by id, and which messages that takes. A plain value.
///
/// Few messages with many ids, as many single ones in a row upset the simulator; none too long, as it ends a
/// link over that. One bad id fails a whole message: its ids are then asked for one by one.
class Subscriptions {
  public:
    using Ids = std::vector<std::int64_t>;

    static constexpr std::size_t largestMessage = 1000;
    /// What has been asked for is not asked for again before that, whether a value came or not.
    static constexpr std::chrono::seconds patience{30};

    /// The messages that ask for those of `ids` that are to be asked for now.
    std::vector<Ids> messagesFor(std::span<const std::int64_t> ids, Clock::TimePoint now);

    /// `ids` have been asked for by the request of that number.
    void noteSent(std::int64_t reqId, Ids ids);

    /// Whether that request, not answered yet, asks for one id alone.
    bool asksForOne(std::int64_t reqId) const;

    /// The simulator's answer to a request; the ids to ask for one by one.
    Ids noteResult(std::int64_t reqId, bool isSuccess);

  private:
    std::unordered_map<std::int64_t, Clock::TimePoint> askedAt_;
    std::map<std::int64_t, Ids> unanswered_;
};

} // namespace tarnly
