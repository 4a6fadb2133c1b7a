#include "TarnlyTrack/Replay/RecordedFlight.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "TarnlyTrack/Log/Derived.hpp"
#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::track {
namespace {

/// The same angle from -180 to 180 degrees.
double wrapped(double degrees) { return std::remainder(degrees, 360); }

} // namespace

RecordedFlight::RecordedFlight(FlightLog log)
    : log_(std::move(log)), count_(log_.firstRecording()), frozen_(log_.frozen()) {
    goTo(begin());
}

void RecordedFlight::goTo(double seconds) {
    moment_ = std::clamp(seconds, begin(), end());
    const auto all = times();
    // The first one behind the moment; that there is one before it, the clamp has seen to.
    const auto next = static_cast<std::size_t>(std::ranges::upper_bound(all, moment_) - all.begin());
    sample_ = next - 1;
    part_ = next < count_ && isFlown(sample_) ? (moment_ - all[sample_]) / (all[next] - all[sample_]) : 0;
}

bool RecordedFlight::isFlown(std::size_t sample) const {
    return !isGap(times()[sample], times()[sample + 1]) && !isJump(sample);
}

bool RecordedFlight::isJump(std::size_t sample) const {
    const auto from = log_.position(sample);
    const auto to = log_.position(sample + 1);
    const double seconds = times()[sample + 1] - times()[sample];
    return from && to && seconds <= longestStepSeconds && !canFly(*from, *to, seconds);
}

bool RecordedFlight::has(Quantity quantity) const {
    return !std::ranges::all_of(log_.column(quantity).first(count_),
                                [](double value) { return std::isnan(value); });
}

bool RecordedFlight::has(Switch which) const {
    std::size_t sample = 0;
    while (sample < count_ && !log_.value(which, sample))
        ++sample;
    return sample < count_;
}

template <typename Of>
double RecordedFlight::between(const Of& of) const {
    const double here = of(sample_);
    if (part_ == 0) return here;
    const double next = of(sample_ + 1);
    return std::isnan(next) ? here : here + (next - here) * part_;
}

template <typename Of>
double RecordedFlight::angleBetween(const Of& of) const {
    const double here = of(sample_);
    return wrapped(between([&](std::size_t sample) { return here + wrapped(of(sample) - here); }));
}

double RecordedFlight::number(Quantity quantity) const {
    const auto column = log_.column(quantity);
    const auto of = [&](std::size_t sample) { return column[sample]; };
    const bool isAngle = quantity == Quantity::lon || quantity == Quantity::bankDeg;
    return isAngle ? angleBetween(of) : between(of);
}

std::optional<bool> RecordedFlight::isOn(Switch which) const { return log_.value(which, sample_); }

std::vector<double> RecordedFlight::numbers(Lever lever) const {
    const auto here = log_.value(lever, sample_);
    if (!here) return {};
    std::vector<double> result(here->begin(), here->end());
    const auto next = part_ > 0 ? log_.value(lever, sample_ + 1) : std::nullopt;
    if (!next || next->size() != result.size()) return result;
    for (std::size_t engine = 0; engine < result.size(); ++engine)
        result[engine] += ((*next)[engine] - result[engine]) * part_;
    return result;
}

template <typename Of>
double RecordedFlight::derived(std::size_t sample, Of member) const {
    const bool isBesideJump = (sample > 0 && isJump(sample - 1)) || (sample + 1 < count_ && isJump(sample));
    return isBesideJump ? unknown : (derivedAt(log_, sample).*member).value_or(unknown);
}

double RecordedFlight::groundSpeedKt() const {
    return between([&](std::size_t sample) { return derived(sample, &Derived::groundSpeedKt); });
}

double RecordedFlight::trackDeg() const {
    const double degrees =
        angleBetween([&](std::size_t sample) { return derived(sample, &Derived::trackDeg); });
    return degrees < 0 ? degrees + 360 : degrees;
}

double RecordedFlight::verticalSpeedFtMin() const {
    return between([&](std::size_t sample) { return derived(sample, &Derived::verticalSpeedFtMin); });
}

bool RecordedFlight::isPaused() const {
    return std::ranges::any_of(frozen_, [&](const Stretch& stretch) {
        return stretch.begin <= sample_ && sample_ + 1 < stretch.end;
    });
}

} // namespace tarnly::track
