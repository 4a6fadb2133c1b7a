#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Script/Trigger.hpp"

namespace tarnly {

/// Finds the position of a navigation fix by its identifier; absent when there is no such fix. Callable from
/// any thread.
using FixResolver = std::function<std::optional<Coordinate>(const std::string& ident)>;

/// Makes the resolver of one script's fixes, which one thread at a time may ask. `isWanted` turns false when
/// nobody waits for the script any more: then a search under way ends, and nothing is found from then on. It
/// is asked often, by who asks the resolver.
using MakeFixResolver = std::function<FixResolver(std::function<bool()> isWanted)>;

/// The part of a trigger engine that never changes: the triggers of one script, made ready for testing.
///
/// All work on texts is done here, once, so that testing a trigger handles numbers only. Shared by an engine
/// and its copies; immutable, hence safe from any thread.
class ArmedScript {
  public:
    /// Calls `fixPosition` once for each distinct fix, in upper case, and does not keep it.
    ArmedScript(std::vector<ArmedTrigger> triggers, const FixResolver& fixPosition);

    /// In load order.
    const std::vector<ArmedTrigger>& triggers() const { return triggers_; }
    /// One for each trigger, in the same order.
    const std::vector<TriggerTest>& tests() const { return tests_; }
    /// The fixes that were not found, in upper case, in the order in which they are first named.
    const std::vector<std::string>& unresolvedFixes() const { return unresolvedFixes_; }

    /// How many id numbers there are. The last stands for every id that no trigger has.
    std::size_t idCount() const { return dependents_.size(); }
    /// The triggers that wait for the one at `index` to fire, in load order.
    const std::vector<TriggerIndex>& dependents(TriggerIndex index) const {
        return dependents_[tests_[index].id];
    }

  private:
    class Fixes;
    class Ids;

    std::vector<ArmedTrigger> triggers_;
    std::vector<std::string> unresolvedFixes_;
    std::vector<TriggerTest> tests_;
    /// By id number.
    std::vector<std::vector<TriggerIndex>> dependents_;
};

} // namespace tarnly
