#include "TarnlyCore/Script/ArmedScript.hpp"

#include <limits>
#include <map>
#include <optional>
#include <string_view>

#include "TarnlyCore/Script/ConditionFields.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr double absent = std::numeric_limits<double>::quiet_NaN();

/// The number that a sample is compared with.
double limit(const TriggerCondition& condition) {
    if (!isComplete(condition)) return absent;
    switch (condition.kind) {
        case TriggerConditionKind::reachesFix:
            return condition.withinNm.value_or(absent);
        case TriggerConditionKind::crossesAgl:
        case TriggerConditionKind::crossesAltitude:
            return condition.feet.value_or(absent);
        case TriggerConditionKind::afterGearDown:
        case TriggerConditionKind::afterStart:
        case TriggerConditionKind::afterTrigger:
            return condition.seconds.value_or(absent);
    }
    return absent;
}

} // namespace

/// The positions of the fixes of a script, each asked for once.
class ArmedScript::Fixes {
  public:
    Fixes(const FixResolver& fixPosition, std::vector<std::string>& unresolved)
        : fixPosition_(fixPosition), unresolved_(unresolved) {}

    Coordinate position(const TriggerCondition& condition) {
        if (condition.kind != TriggerConditionKind::reachesFix || !condition.fix) return {absent, absent};
        const auto ident = upperCased(*condition.fix);
        auto known = positions_.find(ident);
        if (known == positions_.end()) known = positions_.emplace(ident, lookUp(ident)).first;
        return known->second;
    }

  private:
    Coordinate lookUp(const std::string& ident) {
        const auto found = fixPosition_(ident);
        if (!found) unresolved_.push_back(ident);
        return found.value_or(Coordinate{absent, absent});
    }

    const FixResolver& fixPosition_;
    std::vector<std::string>& unresolved_;
    std::map<std::string, Coordinate> positions_;
};

/// Numbers the ids of a script. An ordered map, as clients choose the ids and could make a hash table
/// degenerate.
class ArmedScript::Ids {
  public:
    explicit Ids(const std::vector<ArmedTrigger>& triggers) {
        for (const auto& trigger : triggers)
            numbers_.try_emplace(trigger.id, count());
    }

    TriggerIdNumber count() const { return static_cast<TriggerIdNumber>(numbers_.size()); }

    /// `count()` for an id that no trigger has.
    TriggerIdNumber number(const std::optional<std::string>& id) const {
        const auto found = id ? numbers_.find(*id) : numbers_.end();
        return found == numbers_.end() ? count() : found->second;
    }

  private:
    std::map<std::string_view, TriggerIdNumber> numbers_;
};

ArmedScript::ArmedScript(std::vector<ArmedTrigger> triggers, const FixResolver& fixPosition)
    : triggers_(std::move(triggers)) {
    Fixes fixes(fixPosition, unresolvedFixes_);
    const Ids ids(triggers_);
    tests_.reserve(triggers_.size());
    dependents_.resize(ids.count() + std::size_t{1});
    for (const auto& [id, name, condition, actionKind, action] : triggers_) {
        const auto source = ids.number(condition.afterTriggerId);
        if (condition.kind == TriggerConditionKind::afterTrigger) {
            dependents_[source].push_back(static_cast<TriggerIndex>(tests_.size()));
        }
        tests_.push_back({condition.kind, condition.climbing.value_or(false), ids.number(id), source,
                          limit(condition), fixes.position(condition)});
    }
}

} // namespace tarnly
