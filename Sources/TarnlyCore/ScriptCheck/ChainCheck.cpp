#include "TarnlyCore/ScriptCheck/ChainCheck.hpp"

#include <algorithm>
#include <map>
#include <string_view>
#include <vector>

#include "TarnlyCore/ScriptCheck/NearName.hpp"

namespace tarnly {
namespace {

/// Looking for a name among many takes its time, and who has many such faults mends them one by one.
constexpr std::size_t mostSuggestions = 100;
constexpr std::size_t mostCandidates = 2000;

/// The triggers of one id, which fire as one.
struct Chain {
    std::string_view id;
    std::vector<const CheckedTrigger*> triggers{};
    /// Those whose triggers may fire once this one has, by their place in the list of all.
    std::vector<std::size_t> dependents{};
    bool mayFire = false;
    /// The walk in which it was last passed, from 1.
    std::size_t walk = 0;
};

bool waitsForAnother(const CheckedTrigger& trigger) {
    const auto& condition = trigger.condition;
    return condition && condition->kind == TriggerConditionKind::afterTrigger && condition->afterTriggerId;
}

class Chains {
  public:
    Chains(std::span<const CheckedTrigger> triggers, ScriptFindings& findings) : findings_(findings) {
        for (const auto& trigger : triggers)
            if (trigger.id) add(trigger);
        for (const auto& trigger : triggers)
            link(trigger);
    }

    void checkCircles() {
        spread();
        std::size_t walk = 0;
        for (auto& chain : all_) {
            if (chain.mayFire || chain.walk != 0) continue;
            followFrom(chain, ++walk);
        }
    }

  private:
    void add(const CheckedTrigger& trigger) {
        const auto [known, isNew] = numbers_.try_emplace(*trigger.id, all_.size());
        if (isNew) {
            all_.push_back({known->first});
        } else {
            findings_.error(trigger.idAt, "the id " + inQuotes(*trigger.id) +
                                              " is another trigger's already, and only the one of them that "
                                              "comes first fires; give this one another id");
        }
        all_[known->second].triggers.push_back(&trigger);
    }

    void link(const CheckedTrigger& trigger) {
        auto* own = trigger.id ? &all_[numbers_.at(*trigger.id)] : nullptr;
        const bool isFree = !waitsForAnother(trigger);
        const auto source = isFree ? numbers_.end() : numbers_.find(*trigger.condition->afterTriggerId);
        if (!isFree && source == numbers_.end()) tellNobody(trigger);
        if (own == nullptr) return;
        if (source == numbers_.end()) {
            own->mayFire = true; // or has been told of
        } else {
            all_[source->second].dependents.push_back(numbers_.at(*trigger.id));
        }
    }

    void tellNobody(const CheckedTrigger& trigger) {
        const auto& wanted = *trigger.condition->afterTriggerId;
        std::vector<std::string_view> ids;
        if (++suggestions_ <= mostSuggestions && all_.size() <= mostCandidates)
            std::ranges::transform(all_, std::back_inserter(ids), &Chain::id);
        findings_.error(trigger.placeOf(&TriggerCondition::afterTriggerId),
                        "no trigger has the id " + inQuotes(wanted) + ", so this one never fires" +
                            didYouMean(wanted, ids, "; name one of the script"));
    }

    /// From those that wait for nobody to all that wait for them.
    void spread() {
        std::vector<std::size_t> next;
        for (std::size_t number = 0; number < all_.size(); ++number)
            if (all_[number].mayFire) next.push_back(number);
        while (!next.empty()) {
            const auto number = next.back();
            next.pop_back();
            for (const auto dependent : all_[number].dependents) {
                if (all_[dependent].mayFire) continue;
                all_[dependent].mayFire = true;
                next.push_back(dependent);
            }
        }
    }

    /// All triggers of a chain that cannot fire wait for others of that kind: the way ends in a circle, or
    /// where another way has been.
    void followFrom(Chain& first, std::size_t walk) {
        auto* chain = &first;
        while (chain->walk == 0) {
            chain->walk = walk;
            chain = &sourceOf(*chain);
        }
        if (chain->walk == walk) tellCircle(*chain);
    }

    Chain& sourceOf(const Chain& chain) {
        return all_[numbers_.find(*chain.triggers.front()->condition->afterTriggerId)->second];
    }

    void tellCircle(Chain& first) {
        constexpr std::size_t mostShown = 5;
        const auto at = first.triggers.front()->placeOf(&TriggerCondition::afterTriggerId);
        auto* source = &sourceOf(first);
        if (source == &first) {
            return findings_.error(at, "the trigger waits for itself, so it never fires; name another one");
        }
        auto way = inQuotes(first.id);
        std::size_t shown = 1;
        for (; source != &first; source = &sourceOf(*source)) {
            if (++shown <= mostShown) way += " for " + inQuotes(source->id);
        }
        way += (shown > mostShown ? " … for " : " for ") + inQuotes(first.id);
        findings_.error(at, "triggers wait for each other in a circle and never fire: " + way +
                                "; let one of them wait for something else");
    }

    ScriptFindings& findings_;
    std::vector<Chain> all_;
    /// By id. An ordered map, as in the engine.
    std::map<std::string_view, std::size_t> numbers_;
    std::size_t suggestions_ = 0;
};

} // namespace

void checkChains(std::span<const CheckedTrigger> triggers, ScriptFindings& findings) {
    Chains(triggers, findings).checkCircles();
}

} // namespace tarnly
