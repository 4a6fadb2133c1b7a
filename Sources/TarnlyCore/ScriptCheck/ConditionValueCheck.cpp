#include "TarnlyCore/ScriptCheck/ConditionValueCheck.hpp"

namespace tarnly {
namespace {

/// Nautical miles that an aircraft of 120 knots flies from one sample to the next, and a little more.
constexpr double leastRadius = 0.02;

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
    }
}

void checkDelay(const CheckedTrigger& trigger, ScriptFindings& findings) {
    if (*trigger.condition->seconds >= 0) return;
    findings.warning(trigger.placeOf(&TriggerCondition::seconds),
                     "a time below 0 counts as 0; write 0, or the delay that was meant");
}

} // namespace

void checkConditionValues(const CheckedTrigger& trigger, ScriptFindings& findings) {
    switch (trigger.condition->kind) {
        case TriggerConditionKind::reachesFix:
            return checkFix(trigger, findings);
        case TriggerConditionKind::crossesAgl:
            if (*trigger.condition->feet >= 0) return;
            return findings.warning(
                trigger.placeOf(&TriggerCondition::feet),
                "a height above the ground is hardly ever below 0; for an altitude choose "
                "the condition_kind crosses_altitude");
        case TriggerConditionKind::afterGearDown:
        case TriggerConditionKind::afterStart:
        case TriggerConditionKind::afterTrigger:
            return checkDelay(trigger, findings);
        case TriggerConditionKind::crossesAltitude:
            return;
    }
}

} // namespace tarnly
