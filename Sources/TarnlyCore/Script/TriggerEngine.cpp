#include "TarnlyCore/Script/TriggerEngine.hpp"

#include <algorithm>
#include <cmath>
#include <compare>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <queue>
#include <utility>

namespace tarnly {
namespace {

/// A trigger to be tested again, in the walk of that number.
struct Retest {
    std::uint32_t walk;
    TriggerIndex index;

    auto operator<=>(const Retest&) const = default;
};

using Retests = std::priority_queue<Retest, std::vector<Retest>, std::greater<>>;

double orNaN(const std::optional<double>& value) {
    return value.value_or(std::numeric_limits<double>::quiet_NaN());
}

/// Strict on the far side: one sample exactly on the threshold never makes for two crossings.
bool crosses(double before, double now, const TriggerTest& threshold) {
    return threshold.climbing ? before < threshold.limit && now >= threshold.limit
                              : before > threshold.limit && now <= threshold.limit;
}

double radians(double degrees) { return degrees * 3.141592653589793 / 180; }

} // namespace

/// All that conditions are tested against; NaN is what is not known.
struct TriggerEngine::Moment {
    const TriggerSample& sample;
    double lat;
    double lon;
    double altFt;
    double aglFt;
    double previousAltFt;
    double previousAglFt;
    double gearDownSince;
};

TriggerEngine::TriggerEngine(std::vector<ArmedTrigger> triggers, const FixResolver& fixPosition)
    : script_(std::make_shared<const ArmedScript>(std::move(triggers), fixPosition)) {
    reset();
}

FiredTriggers TriggerEngine::evaluate(const TriggerSample& sample) {
    forgetOtherLink(sample);
    trackGear(sample);
    std::vector<TriggerIndex> fired;
    FiredTriggers result;
    try {
        walk(sample, fired);
        if (!fired.empty()) result = firings_.emplace_back(script_, fired, sample);
    } catch (...) {
        takeBack(fired);
        throw;
    }
    previous_ = sample;
    if (!result.empty()) std::erase_if(waiting_, [this](TriggerIndex index) { return hasFired(index); });
    return result;
}

void TriggerEngine::takeBack(const std::vector<TriggerIndex>& fired) noexcept {
    for (const auto index : fired)
        firedAt_[script_->tests()[index].id].reset();
}

std::vector<ArmedTrigger> TriggerEngine::waiting() const {
    std::vector<ArmedTrigger> result;
    result.reserve(waiting_.size());
    for (const auto index : waiting_)
        result.push_back(triggers()[index]);
    return result;
}

void TriggerEngine::reset() {
    firings_.clear();
    firedAt_.assign(script_->idCount(), std::nullopt);
    waiting_.resize(triggers().size());
    std::iota(waiting_.begin(), waiting_.end(), TriggerIndex{0});
    previous_.reset();
    gearDownSince_.reset();
}

double TriggerEngine::distanceNm(double lat1, double lon1, double lat2, double lon2) {
    const double phi1 = radians(lat1);
    const double phi2 = radians(lat2);
    const double deltaLambda = radians(lon2 - lon1);
    const double s1 = std::sin((phi2 - phi1) * 0.5);
    const double s2 = std::sin(deltaLambda * 0.5);
    const double a = s1 * s1 + s2 * (std::cos(phi1) * std::cos(phi2) * s2);
    constexpr double earthDiameterNm = 6880.13;
    return std::asin(std::min(std::sqrt(a), 1.0)) * earthDiameterNm;
}

void TriggerEngine::forgetOtherLink(const TriggerSample& sample) {
    if (!previous_ || previous_->link == sample.link) return;
    previous_.reset();
    gearDownSince_.reset();
}

void TriggerEngine::trackGear(const TriggerSample& sample) {
    // Nothing known about the gear is no reason to start a running delay anew.
    if (!sample.gearDown) return;
    if (!*sample.gearDown) {
        gearDownSince_.reset();
    } else if (!gearDownSince_) {
        gearDownSince_ = sample.elapsed;
    }
}

TriggerEngine::Moment TriggerEngine::momentOf(const TriggerSample& sample) const {
    return {.sample = sample,
            .lat = orNaN(sample.lat),
            .lon = orNaN(sample.lon),
            .altFt = orNaN(sample.altFt),
            .aglFt = orNaN(sample.aglFt),
            .previousAltFt = orNaN(previous_ ? previous_->altFt : std::nullopt),
            .previousAglFt = orNaN(previous_ ? previous_->aglFt : std::nullopt),
            .gearDownSince = orNaN(gearDownSince_)};
}

void TriggerEngine::walk(const TriggerSample& sample, std::vector<TriggerIndex>& fired) {
    const auto now = momentOf(sample);
    Retests retests;
    for (const auto index : waiting_) {
        if (!fires(index, now, fired)) continue;
        for (const auto dependent : script_->dependents(index)) {
            if (dependent < index) retests.push({2, dependent});
        }
    }
    // Within one sample nothing changes but what has fired. So a later walk can fire only a trigger that
    // waits for one that fired after it was passed; all others need not be visited.
    while (!retests.empty()) {
        const auto [walk, index] = retests.top();
        retests.pop();
        if (!fires(index, now, fired)) continue;
        for (const auto dependent : script_->dependents(index)) {
            retests.push({dependent > index ? walk : walk + 1, dependent});
        }
    }
}

bool TriggerEngine::fires(TriggerIndex index, const Moment& now, std::vector<TriggerIndex>& fired) {
    const auto& test = script_->tests()[index];
    if (hasFired(index) || !holds(test, now)) return false;
    fired.push_back(index);
    firedAt_[test.id] = now.sample.elapsed;
    return true;
}

bool TriggerEngine::holds(const TriggerTest& test, const Moment& now) const {
    switch (test.kind) {
        case TriggerConditionKind::reachesFix:
            return distanceNm(now.lat, now.lon, test.fix.latitude, test.fix.longitude) <= test.limit;
        case TriggerConditionKind::crossesAgl:
            return crosses(now.previousAglFt, now.aglFt, test);
        case TriggerConditionKind::crossesAltitude:
            return crosses(now.previousAltFt, now.altFt, test);
        case TriggerConditionKind::afterGearDown:
            return now.sample.elapsed - now.gearDownSince >= test.limit;
        case TriggerConditionKind::afterStart:
            return now.sample.elapsed >= test.limit;
        case TriggerConditionKind::afterTrigger:
            return now.sample.elapsed - orNaN(firedAt_[test.source]) >= test.limit;
    }
    return false;
}

std::vector<FiredTrigger> TriggerEngine::fired() const {
    std::vector<FiredTrigger> result;
    for (const auto& firing : firings_)
        std::ranges::move(firing.described(), std::back_inserter(result));
    return result;
}

} // namespace tarnly
