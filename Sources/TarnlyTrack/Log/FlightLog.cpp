#include "TarnlyTrack/Log/FlightLog.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarnly::track {
namespace {

constexpr std::uint8_t notKnown = 2;

/// What stays while the simulator is paused.
constexpr std::array held{Quantity::lat,   Quantity::lon,     Quantity::altitudeFt,
                          Quantity::aglFt, Quantity::bankDeg, Quantity::pitchDeg};

/// Both unknown is the same, too.
bool isSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

} // namespace

void FlightLog::append(const LogSample& sample) {
    for (std::size_t i = 0; i < quantityCount; ++i)
        columns_[i].push_back(sample.numbers[i]);
    for (std::size_t i = 0; i < switchCount; ++i)
        switches_[i].push_back(sample.switches[i] ? std::uint8_t(*sample.switches[i] ? 1 : 0) : notKnown);
    for (std::size_t i = 0; i < leverCount; ++i)
        appendLever(i, sample);

    const auto last = size() - 1;
    if (last == 0 || isGapBefore(last)) isAltitudeTold_ = false;
    auto& altitude = columns_[static_cast<std::size_t>(Quantity::altitudeFt)].back();
    if (std::isnan(altitude)) return;
    isAltitudeTold_ = isAltitudeTold_ || altitude != 0;
    if (!isAltitudeTold_) altitude = unknown;
}

void FlightLog::appendLever(std::size_t lever, const LogSample& sample) {
    auto& column = levers_[lever];
    const bool isKnown = sample.hasLever[lever];
    if (isKnown) {
        const auto& numbers = sample.levers[lever];
        column.numbers.insert(column.numbers.end(), numbers.begin(), numbers.end());
        column.longest = std::max(column.longest, numbers.size());
    }
    column.ends.push_back(static_cast<std::uint32_t>(column.numbers.size()));
    column.isKnown.push_back(isKnown);
}

void FlightLog::append(FiredTrigger fired) {
    fired.sample = size() == 0 ? std::nullopt : std::optional(size() - 1);
    fired_.push_back(std::move(fired));
}

std::size_t FlightLog::firstRecording() const {
    const auto& times = columns_.front();
    return static_cast<std::size_t>(std::ranges::is_sorted_until(times) - times.begin());
}

std::optional<double> FlightLog::value(Quantity quantity, std::size_t sample) const {
    const double number = column(quantity)[sample];
    return std::isnan(number) ? std::nullopt : std::optional(number);
}

std::optional<bool> FlightLog::value(Switch which, std::size_t sample) const {
    const auto state = switches_[static_cast<std::size_t>(which)][sample];
    return state == notKnown ? std::nullopt : std::optional(state == 1);
}

std::optional<std::span<const double>> FlightLog::value(Lever lever, std::size_t sample) const {
    const auto& column = levers_[static_cast<std::size_t>(lever)];
    if (!column.isKnown[sample]) return std::nullopt;
    const std::size_t begin = sample == 0 ? 0 : column.ends[sample - 1];
    return std::span(column.numbers).subspan(begin, column.ends[sample] - begin);
}

std::optional<Position> FlightLog::position(std::size_t sample) const {
    const Position position{column(Quantity::lat)[sample], column(Quantity::lon)[sample]};
    if (std::isnan(position.lat) || std::isnan(position.lon)) return std::nullopt;
    return position;
}

bool FlightLog::isGapBefore(std::size_t sample) const {
    return isGap(elapsedSeconds(sample - 1), elapsedSeconds(sample));
}

std::vector<Stretch> FlightLog::segments() const {
    std::vector<Stretch> result;
    for (std::size_t i = 0; i < size(); ++i) {
        if (i == 0 || isGapBefore(i)) result.push_back({i, i});
        result.back().end = i + 1;
    }
    return result;
}

bool FlightLog::isFrozenBetween(std::size_t sample, std::size_t next) const {
    return position(sample) && !isGapBefore(next) && std::ranges::all_of(held, [&](Quantity quantity) {
               return isSame(column(quantity)[sample], column(quantity)[next]);
           });
}

std::vector<Stretch> FlightLog::frozen() const {
    std::vector<Stretch> result;
    std::size_t begin = 0;
    for (std::size_t i = 1; i <= size(); ++i) {
        if (i < size() && isFrozenBetween(i - 1, i)) continue;
        if (elapsedSeconds(i - 1) - elapsedSeconds(begin) >= frozenSeconds) result.push_back({begin, i});
        begin = i;
    }
    return result;
}

} // namespace tarnly::track
