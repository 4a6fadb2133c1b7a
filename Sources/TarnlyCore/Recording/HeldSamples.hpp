#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"

namespace tarnly {

/// The samples that wait for the proof that the simulator was alive when they were taken, oldest first.
///
/// A simulator that has stopped leaves its last values behind, which look like an aircraft that stands still.
/// So a sample counts once its proof is there, and is dropped where that does not come. A plain value of the
/// sampling loop, without a clock of its own.
class HeldSamples {
  public:
    /// Whether the simulator was alive, over that link, at about that moment.
    using IsProven = std::function<bool(std::int64_t link, Clock::TimePoint moment)>;

    /// Longer than that no sample waits.
    static constexpr Clock::Duration patience = std::chrono::seconds(3);

    /// Samples that came over another link are dropped: nothing can prove them any more.
    void add(SampleObservation seen);

    /// Takes out what is proven at `now`, in order. What is older than `patience` is dropped, and so is what
    /// stands before a proven one: recorded later it would be out of order.
    std::vector<SampleObservation> takeProven(const IsProven& isProven, Clock::TimePoint now);

    void clear() { held_.clear(); }

    std::size_t size() const { return held_.size(); }

  private:
    std::vector<SampleObservation> held_;
};

} // namespace tarnly
