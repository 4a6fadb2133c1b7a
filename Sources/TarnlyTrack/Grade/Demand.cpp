#include "TarnlyTrack/Grade/Demand.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlyPlatform/Base/NumberText.hpp"

namespace tarnly::track {
namespace {

constexpr double halfWindow = 2.5; // seconds
constexpr double shortestWindow = 3;
constexpr double secondsAMinute = 60;

/// The last sample without a gap from `sample` on that is no further than half a window away.
std::size_t reach(const GradedFlight& flight, std::size_t sample, bool isForward) {
    const auto start = flight.time(sample);
    while (isForward ? sample + 1 < flight.size() : sample > 0) {
        const auto next = isForward ? sample + 1 : sample - 1;
        const bool isFar = std::abs(flight.time(next) - start) > halfWindow;
        if (isFar || flight.isBrokenBetween(std::min(sample, next), std::max(sample, next))) break;
        sample = next;
    }
    return sample;
}

std::optional<double> descentAt(const GradedFlight& flight, std::size_t sample) {
    const auto first = reach(flight, sample, false);
    const auto last = reach(flight, sample, true);
    const auto before = flight.log().value(Quantity::altitudeFt, first);
    const auto behind = flight.log().value(Quantity::altitudeFt, last);
    const auto seconds = flight.time(last) - flight.time(first);
    if (!before || !behind || seconds < shortestWindow) return std::nullopt;
    return (*before - *behind) / seconds * secondsAMinute;
}

} // namespace

double Demand::excess(double number) const {
    const auto beyond = isLeast ? limit - number : number - limit;
    return std::abs(beyond) <= limitSlack ? 0 : beyond;
}

Demand bankDemand(const FlightLog& log, double most) {
    const auto bank = [&log](std::size_t sample) -> std::optional<double> {
        const auto value = log.value(Quantity::bankDeg, sample);
        return value ? std::optional(std::abs(*value)) : std::nullopt;
    };
    return {"bank", "°", bank, most};
}

Demand descentDemand(const GradedFlight& flight, double most) {
    const auto descent = [&flight](std::size_t sample) { return descentAt(flight, sample); };
    return {"descent", " ft/min", descent, most};
}

Measure measure(const GradedFlight& flight, const Stretch& part, const Demand& demand) {
    Measure result;
    for (auto sample = part.begin; sample < part.end; ++sample) {
        const auto value = demand.value(sample);
        if (!value) continue;
        const auto excess = demand.excess(*value);
        if (!result.worst || excess > demand.excess(result.worstValue)) {
            result.worst = sample;
            result.worstValue = *value;
        }
        // The last sample of a part stands for a moment.
        const auto seconds = sample + 1 < part.end ? flight.flownSeconds(sample) : 0;
        result.judgedSeconds += seconds;
        if (excess <= 0) continue;
        result.isMet = false;
        result.outsideSeconds += seconds;
    }
    return result;
}

std::string tenthsText(double value) {
    std::string text;
    constexpr double tenths = 10;
    constexpr double wholeFrom = 1e15; // beyond it a double has no tenths, and the product may overflow
    const auto rounded = std::abs(value) < wholeFrom ? std::round(value * tenths) / tenths : value;
    appendNumber(text, rounded == 0 ? 0 : rounded); // no minus zero
    return text;
}

std::string tenthsText(double value, double limit) {
    auto text = tenthsText(value);
    if (std::abs(value - limit) <= limitSlack || text != tenthsText(limit)) return text;
    text.clear();
    appendNumber(text, value);
    return text;
}

std::string secondsText(double seconds) { return tenthsText(seconds) + " s"; }

} // namespace tarnly::track
