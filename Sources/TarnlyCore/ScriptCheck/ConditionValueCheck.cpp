#include "TarnlyCore/ScriptCheck/ConditionValueCheck.hpp"

namespace tarnly {
namespace {

/// Nautical miles that an aircraft of 120 knots flies from one sample to the next, and a little more.
constexpr double leastRadius = 0.02;
/// Half the way around the earth, in nautical miles: nothing is further away.
constexpr double wholeEarth = 10'800;
/// Feet. Spacecraft begin their descent below that, and altimeters show more than the other.
constexpr double highest = 500'000;
constexpr double lowestAltitude = -5'000;
constexpr double aDay = 86'400; // seconds

void checkFix(const CheckedTrigger& trigger, ScriptFindings& findings) {
    const auto& condition = *trigger.condition;
    const auto fixAt = trigger.placeOf(&TriggerCondition::fix);
    const auto& fix = *condition.fix;
    if (fix.empty()) findings.error(fixAt, "the fix is empty, so it is never reached; name one");
    if (fix.starts_with(' ') || fix.ends_with(' ')) {
        findings.warning(fixAt, "the fix " + inQuotes(fix) +
                                    " has a blank around it, with which it is looked up; remove the blank");
    }
    const auto radiusAt = trigger.placeOf(&TriggerCondition::withinNm);
    if (*condition.withinNm < 0) {
        findings.error(radiusAt,
                       "no distance is below 0, so the fix is never reached; give it a quarter of a "
                       "mile or more");
    } else if (*condition.withinNm < leastRadius) {
        findings.warning(radiusAt,
                         "an aircraft flies further from one sample to the next, and may miss the "
                         "fix; give it a quarter of a mile or more");
    } else if (*condition.withinNm >= wholeEarth) {
        findings.warning(radiusAt,
                         "the whole earth is that near, so it fires on the first sample; within_nm counts "
                         "nautical miles");
    }
}

void checkTooHigh(const CheckedTrigger& trigger, ScriptFindings& findings) {
    if (*trigger.condition->feet <= highest) return;
    findings.warning(trigger.placeOf(&TriggerCondition::feet),
                     "hardly any aircraft gets there; write the height in feet");
}

/// What the ground keeps from happening: a sample's height is 0 or more, and a crossing needs one from the
/// far side.
void checkAgl(const CheckedTrigger& trigger, ScriptFindings& findings) {
    const auto& condition = *trigger.condition;
    const auto at = trigger.placeOf(&TriggerCondition::feet);
    if (*condition.feet < 0) {
        findings.error(at,
                       "no height above the ground is below 0, so this one never fires; for an altitude "
                       "choose the condition_kind crosses_altitude");
    } else if (*condition.feet == 0 && *condition.climbing) {
        findings.error(at,
                       "nothing climbs through the ground from below, so this one never fires; give it 20 "
                       "feet or more");
    } else if (*condition.feet == 0) {
        findings.warning(at,
                         "an aircraft on its wheels may show a height above 0, and then never fires this; "
                         "give it a few feet more");
    }
    checkTooHigh(trigger, findings);
}

void checkAltitude(const CheckedTrigger& trigger, ScriptFindings& findings) {
    checkTooHigh(trigger, findings);
    if (*trigger.condition->feet >= lowestAltitude) return;
    findings.warning(trigger.placeOf(&TriggerCondition::feet),
                     "no altimeter shows that little; write the altitude in feet");
}

void checkDelay(const CheckedTrigger& trigger, ScriptFindings& findings) {
    const auto at = trigger.placeOf(&TriggerCondition::seconds);
    if (*trigger.condition->seconds < 0) {
        findings.warning(at, "a time below 0 counts as 0; write 0, or the delay that was meant");
    } else if (*trigger.condition->seconds > aDay) {
        findings.warning(at, "that is longer than a day; write the delay in seconds");
    }
}

} // namespace

void checkConditionValues(const CheckedTrigger& trigger, ScriptFindings& findings) {
    switch (trigger.condition->kind) {
        case TriggerConditionKind::reachesFix:
            return checkFix(trigger, findings);
        case TriggerConditionKind::crossesAgl:
            return checkAgl(trigger, findings);
        case TriggerConditionKind::afterGearDown:
        case TriggerConditionKind::afterStart:
        case TriggerConditionKind::afterTrigger:
            return checkDelay(trigger, findings);
        case TriggerConditionKind::crossesAltitude:
            return checkAltitude(trigger, findings);
    }
}

} // namespace tarnly
