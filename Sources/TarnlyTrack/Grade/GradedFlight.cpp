#include "TarnlyTrack/Grade/GradedFlight.hpp"

#include <algorithm>

#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::track {

GradedFlight::GradedFlight(const FlightLog& log)
    : log_(log), size_(log.firstRecording()), isFrozen_(log.size(), false) {
    for (const auto& stretch : log.frozen()) {
        for (auto sample = stretch.begin; sample + 1 < stretch.end; ++sample)
            isFrozen_[sample] = true;
    }
}

bool GradedFlight::isBrokenBetween(std::size_t sample, std::size_t later) const {
    if (isGap(time(sample), time(later))) return true;
    const auto from = log_.position(sample);
    const auto to = log_.position(later);
    return from && to && !canFly(*from, *to, time(later) - time(sample));
}

GradedFlight::Step GradedFlight::stepFrom(std::size_t sample) const {
    if (isBrokenBetween(sample, sample + 1)) return Step::broken;
    return isFrozen_[sample] ? Step::frozen : Step::flown;
}

double GradedFlight::flownSeconds(std::size_t sample) const {
    if (sample + 1 >= size_ || stepFrom(sample) != Step::flown) return 0;
    return time(sample + 1) - time(sample);
}

Stretch GradedFlight::samplesFrom(double begin, double end) const {
    Stretch result;
    while (result.begin < size_ && time(result.begin) < begin - limitSlack)
        ++result.begin;
    result.end = result.begin;
    while (result.end < size_ && time(result.end) <= end + limitSlack)
        ++result.end;
    return result;
}

std::optional<double> GradedFlight::firedAt(const std::string& triggerId, double earliest) const {
    for (const auto& fired : log_.fired()) {
        const bool isOfThis = !fired.sample || *fired.sample < size_;
        if (isOfThis && fired.triggerId == triggerId && fired.elapsedSeconds >= earliest) {
            return fired.elapsedSeconds;
        }
    }
    return std::nullopt;
}

GradedFlight::Passed GradedFlight::between(double begin, double end) const {
    if (size_ == 0) return {.unknown = end - begin};
    Passed passed;
    passed.unknown = std::max(0.0, time(0) - begin) + std::max(0.0, end - time(size_ - 1));
    for (std::size_t sample = 0; sample + 1 < size_; ++sample) {
        const auto seconds = std::min(end, time(sample + 1)) - std::max(begin, time(sample));
        if (seconds <= 0) continue;
        const auto step = stepFrom(sample);
        if (step == Step::broken) passed.unknown += seconds;
        if (step == Step::frozen) passed.frozen += seconds;
    }
    // Not summed up, so that where there is nothing else it is exact.
    passed.flown = std::max(0.0, end - begin - passed.frozen - passed.unknown);
    return passed;
}

} // namespace tarnly::track
