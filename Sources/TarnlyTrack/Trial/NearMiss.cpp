#include "TarnlyTrack/Trial/NearMiss.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "TarnlyCore/Script/ConditionFields.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"

namespace tarnly::track {
namespace {

constexpr auto infinite = std::numeric_limits<double>::infinity();

std::string numberText(double value) {
    std::string text;
    appendNumber(text, value);
    return text;
}

/// Rounded so that one who just missed does not seem to have reached it.
std::string missText(double value, double limit, double rounding) {
    const auto isFaithful = [&](double rounded) {
        return (rounded > limit) == (value > limit) && (rounded < limit) == (value < limit);
    };
    constexpr double finest = 0.001;
    for (auto step = rounding; step >= finest; step /= 10) {
        // Divided, as a tenth is no double.
        const auto rounded = std::round(value / step) / std::round(1 / step);
        if (isFaithful(rounded)) return numberText(rounded);
    }
    return numberText(value);
}

std::string quoted(const std::string& id) { return "\"" + printable(id) + "\""; }

} // namespace

struct NearMisses::Nearest {
    std::string words;
    std::optional<std::size_t> sample{};
};

/// A height that triggers wait for, and what people call it.
struct NearMisses::Height {
    Quantity quantity;
    std::string_view unit;
    std::string_view unknown;
};

Miss NearMisses::of(const ArmedTrigger& trigger) const {
    auto [words, sample] = nearest(trigger.condition);
    return {trigger.id, trigger.title(), std::move(words), sample};
}

std::string NearMisses::at(std::size_t sample) const { return "at " + timeText(log_.elapsedSeconds(sample)); }

NearMisses::Nearest NearMisses::nearest(const TriggerCondition& condition) const {
    if (!isComplete(condition))
        return {"it lacks what its kind of condition needs: look with script --check"};
    if (log_.size() == 0) return {"the recording has no samples"};
    const auto feet = condition.feet.value_or(0);
    const auto seconds = condition.seconds.value_or(0);
    switch (condition.kind) {
        case TriggerConditionKind::reachesFix:
            return toFix(condition);
        case TriggerConditionKind::crossesAgl:
            return toHeight({Quantity::aglFt, "ft AGL", "the recording has no height above ground"}, feet,
                            condition.climbing.value_or(false));
        case TriggerConditionKind::crossesAltitude:
            return toHeight({Quantity::altitudeFt, "ft indicated", "the recording has no altitude"}, feet,
                            condition.climbing.value_or(false));
        case TriggerConditionKind::afterGearDown:
            return toGearDelay(seconds);
        case TriggerConditionKind::afterStart:
            return toTime(seconds);
        case TriggerConditionKind::afterTrigger:
            return toTrigger(condition.afterTriggerId.value_or(""), seconds);
    }
    return {};
}

NearMisses::Nearest NearMisses::toFix(const TriggerCondition& condition) const {
    const auto ident = upperCased(condition.fix.value_or(""));
    const auto limit = condition.withinNm.value_or(0);
    const auto fix = fixPosition_(ident);
    if (!fix) return {"the fix " + printable(ident) + " was not found"};
    double nearest = infinite;
    std::optional<std::size_t> where;
    for (std::size_t sample = 0; sample < log_.size(); ++sample) {
        const auto here = log_.position(sample);
        if (!here) continue;
        const auto distance = TriggerEngine::distanceNm(here->lat, here->lon, fix->latitude, fix->longitude);
        if (distance >= nearest) continue;
        nearest = distance;
        where = sample;
    }
    if (!where) return {"the recording has no position"};
    return {"closest " + missText(nearest, limit, 0.1) + " nm to " + printable(ident) + " " + at(*where) +
                ", and waits for " + numberText(limit) + " nm",
            where};
}

// A descent is a climb with all signs turned.
NearMisses::Nearest NearMisses::toHeight(const Height& height, double feet, bool isClimbing) const {
    const double sign = isClimbing ? 1 : -1;
    const auto above = isClimbing ? "above " : "below ";
    const auto below = isClimbing ? "below " : "above ";
    const auto waits =
        std::string(", and waits for ") + numberText(feet) + " ft on the way " + (isClimbing ? "up" : "down");
    const auto figure = [&](std::size_t sample) {
        return missText(log_.value(height.quantity, sample).value_or(0), feet, 1) + " " +
               std::string(height.unit) + " (" + at(sample) + ")";
    };
    std::optional<std::size_t> lowest;  // of all, on the side where it has to come from
    std::optional<std::size_t> start;   // the first on that side
    std::optional<std::size_t> highest; // from there on
    const auto value = [&](std::size_t sample) {
        return sign * log_.value(height.quantity, sample).value_or(unknown);
    };
    for (std::size_t sample = 0; sample < log_.size(); ++sample) {
        const auto here = value(sample);
        if (std::isnan(here)) continue;
        if (!lowest || here < value(*lowest)) lowest = sample;
        if (!start && here < sign * feet) start = highest = sample;
        if (start && here > value(*highest)) highest = sample;
    }
    if (!lowest) return {std::string(height.unknown)};
    if (!start) return {"never " + std::string(below) + figure(*lowest) + waits, lowest};
    if (value(*highest) < sign * feet)
        return {"never " + std::string(above) + figure(*highest) + waits, highest};
    return {"passed " + numberText(feet) + " " + std::string(height.unit) +
                " only where the recording has a gap, or does not tell the height" + waits,
            highest};
}

NearMisses::Nearest NearMisses::toGearDelay(double seconds) const {
    std::optional<std::size_t> since;
    std::optional<std::size_t> longestSince;
    double longest = 0;
    bool isKnown = false;
    for (std::size_t sample = 0; sample < log_.size(); ++sample) {
        if (sample > 0 && links_[sample] != links_[sample - 1]) since.reset();
        if (const auto isDown = log_.value(Switch::gearDown, sample)) {
            isKnown = true;
            if (!*isDown) {
                since.reset();
            } else if (!since) {
                since = sample;
            }
        }
        if (!since) continue;
        const auto time = log_.elapsedSeconds(sample) - log_.elapsedSeconds(*since);
        if (longestSince && time <= longest) continue;
        longest = time;
        longestSince = since;
    }
    if (!isKnown) return {"the recording does not tell of the gear"};
    if (!longestSince) return {"the gear was never down"};
    return {"the gear was down for " + missText(longest, seconds, 1) + " s at the most (from " +
                timeText(log_.elapsedSeconds(*longestSince)) + "), and it waits for " + numberText(seconds) +
                " s",
            longestSince};
}

NearMisses::Nearest NearMisses::toTime(double seconds) const {
    return {"the recording ends " + at(log_.size() - 1) + ", and it waits for " + timeText(seconds),
            log_.size() - 1};
}

NearMisses::Nearest NearMisses::toTrigger(const std::string& id, double seconds) const {
    const auto source = std::ranges::find(fired_, id, &tarnly::FiredTrigger::triggerId);
    if (source == fired_.end()) return {"waits for " + quoted(id) + ", which did not fire"};
    return {"the recording ends " + missText(end() - source->elapsed, seconds, 1) + " s after " + quoted(id) +
                " fired, and it waits for " + numberText(seconds) + " s",
            log_.size() - 1};
}

} // namespace tarnly::track
