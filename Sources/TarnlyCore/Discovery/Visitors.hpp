#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Net/PeerNetwork.hpp"

namespace tarnly {

/// What the companion's port has lately seen of other computers: for a person who wonders whether a device
/// gets here at all. Only the last of each kind is kept. Owned by the host; belongs to the network thread.
class Visitors {
  public:
    enum class Kind {
        /// A browser was given a page, or a part of one.
        page,
        /// A client's password was refused.
        refused,
        paired
    };

    struct Visits {
        std::int64_t count = 0;
        std::chrono::sys_seconds lastAt{};
        /// As `PeerNetwork` tells it.
        std::string lastFrom;
    };

    using WallClock = std::function<std::chrono::sys_seconds()>;

    explicit Visitors(WallClock wallClock) : wallClock_(std::move(wallClock)) {}

    /// This computer's own are not counted.
    void note(Kind kind, const PeerNetwork& from) {
        thread_.check();
        if (from.isLoopback()) return;
        auto& visits = visits_.at(static_cast<std::size_t>(kind));
        visits = Visits{(visits ? visits->count : 0) + 1, wallClock_(), from.text()};
    }

    /// Absent: there was none.
    const std::optional<Visits>& of(Kind kind) const {
        thread_.check();
        return visits_.at(static_cast<std::size_t>(kind));
    }

  private:
    OnOneThread thread_;
    const WallClock wallClock_;
    std::array<std::optional<Visits>, 3> visits_;
};

} // namespace tarnly
