#include "TarnlyCore/Script/ReferenceEngine.hpp"

#include <algorithm>
#include <cmath>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::test {
namespace {

bool crosses(std::optional<double> before, std::optional<double> now, const TriggerCondition& condition) {
    if (!before || !now || !condition.feet || !condition.climbing) return false;
    if (*condition.climbing) return *before < *condition.feet && *now >= *condition.feet;
    return *before > *condition.feet && *now <= *condition.feet;
}

} // namespace

ReferenceEngine::ReferenceEngine(std::vector<ArmedTrigger> triggers, const FixResolver& fixPosition)
    : triggers_(std::move(triggers)) {
    for (const auto& trigger : triggers_) {
        if (trigger.condition.kind != TriggerConditionKind::reachesFix || !trigger.condition.fix) continue;
        const auto key = upperCased(*trigger.condition.fix);
        if (fixCoordinates_.contains(key)) continue;
        if (std::ranges::find(unresolvedFixes_, key) != unresolvedFixes_.end()) continue;
        if (const auto found = fixPosition(key)) {
            fixCoordinates_[key] = *found;
        } else {
            unresolvedFixes_.push_back(key);
        }
    }
}

std::vector<FiredTrigger> ReferenceEngine::evaluate(const TriggerSample& sample) {
    if (previous_ && previous_->link != sample.link) {
        previous_.reset();
        gearDownSince_.reset();
    }
    if (sample.gearDown == true && !gearDownSince_) gearDownSince_ = sample.elapsed;
    if (sample.gearDown == false) gearDownSince_.reset();
    std::vector<FiredTrigger> result;
    walks_ = 1;
    while (walk(sample, result))
        ++walks_;
    previous_ = sample;
    fired_.insert(fired_.end(), result.begin(), result.end());
    return result;
}

bool ReferenceEngine::walk(const TriggerSample& sample, std::vector<FiredTrigger>& result) {
    bool hasFired = false;
    for (const auto& trigger : triggers_) {
        if (firedAt_.contains(trigger.id) || !holds(trigger.condition, sample)) continue;
        firedAt_[trigger.id] = sample.elapsed;
        result.push_back({trigger.id, trigger.title(), trigger.actionKind, trigger.action, sample.elapsed,
                          sample.lat, sample.lon});
        hasFired = true;
    }
    return hasFired;
}

bool ReferenceEngine::holds(const TriggerCondition& condition, const TriggerSample& sample) const {
    const auto& seconds = condition.seconds;
    switch (condition.kind) {
        case TriggerConditionKind::reachesFix:
            return reachesFix(condition, sample);
        case TriggerConditionKind::crossesAgl:
            return previous_ && crosses(previous_->aglFt, sample.aglFt, condition);
        case TriggerConditionKind::crossesAltitude:
            return previous_ && crosses(previous_->altFt, sample.altFt, condition);
        case TriggerConditionKind::afterGearDown:
            return seconds && gearDownSince_ && sample.elapsed - *gearDownSince_ >= *seconds;
        case TriggerConditionKind::afterStart:
            return seconds && sample.elapsed >= *seconds;
        case TriggerConditionKind::afterTrigger:
            return afterTrigger(condition, sample);
    }
    return false;
}

bool ReferenceEngine::reachesFix(const TriggerCondition& condition, const TriggerSample& sample) const {
    if (!condition.fix || !condition.withinNm || !sample.lat || !sample.lon) return false;
    const auto found = fixCoordinates_.find(upperCased(*condition.fix));
    if (found == fixCoordinates_.end()) return false;
    const auto& [latitude, longitude] = found->second;
    return distanceNm(*sample.lat, *sample.lon, latitude, longitude) <= *condition.withinNm;
}

double ReferenceEngine::distanceNm(double lat1, double lon1, double lat2, double lon2) {
    const double pi = 3.141592653589793;
    const double phi1 = lat1 * pi / 180;
    const double phi2 = lat2 * pi / 180;
    const double lambda = (lon2 - lon1) * pi / 180;
    const double s1 = std::sin((phi2 - phi1) * 0.5);
    const double s2 = std::sin(lambda * 0.5);
    const double a = s1 * s1 + s2 * (std::cos(phi1) * std::cos(phi2) * s2);
    const double root = std::sqrt(a);
    return std::asin(root > 1.0 ? 1.0 : root) * 6880.13;
}

bool ReferenceEngine::afterTrigger(const TriggerCondition& condition, const TriggerSample& sample) const {
    if (!condition.seconds || !condition.afterTriggerId) return false;
    const auto source = firedAt_.find(*condition.afterTriggerId);
    return source != firedAt_.end() && sample.elapsed - source->second >= *condition.seconds;
}

std::vector<ArmedTrigger> ReferenceEngine::waiting() const {
    std::vector<ArmedTrigger> result;
    for (const auto& trigger : triggers_) {
        if (!firedAt_.contains(trigger.id)) result.push_back(trigger);
    }
    return result;
}

void ReferenceEngine::reset() {
    fired_.clear();
    firedAt_.clear();
    previous_.reset();
    gearDownSince_.reset();
}

} // namespace tarnly::test
