#include "TarnlyCore/Recording/HeldSamples.hpp"

#include <utility>

namespace tarnly {

void HeldSamples::add(SampleObservation seen) {
    std::erase_if(held_, [&](const SampleObservation& earlier) { return earlier.link != seen.link; });
    held_.push_back(std::move(seen));
}

std::vector<SampleObservation> HeldSamples::takeProven(const IsProven& isProven, Clock::TimePoint now) {
    std::vector<SampleObservation> proven;
    std::vector<SampleObservation> waiting;
    for (auto& seen : std::exchange(held_, {})) {
        if (now - seen.takenAt > patience) continue;
        if (isProven(seen.link, seen.takenAt)) {
            proven.push_back(std::move(seen));
            waiting.clear();
        } else {
            waiting.push_back(std::move(seen));
        }
    }
    held_ = std::move(waiting);
    return proven;
}

} // namespace tarnly
