#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/Script/FiredTriggers.hpp"
#include "TarnlyCore/Script/Trigger.hpp"

namespace tarnly {

/// Tests the triggers of one script against one sample after the other, and reports each the first time that
/// its condition holds.
///
/// A value: copies share the script and go their own ways. Not synchronised; `LoadedScript` holds the one in
/// force.
class TriggerEngine {
  public:
    /// Calls `fixPosition` once for each distinct fix that a `reachesFix` condition names, in upper case.
    TriggerEngine(std::vector<ArmedTrigger> triggers, const FixResolver& fixPosition);

    /// The triggers that fire on this sample, in the order of firing.
    ///
    /// The order is that of walks through the waiting triggers in load order, in which each firing is seen by
    /// every later test, repeated until a walk fires none. The cost is that of one walk, and of sorting what
    /// fires. Triggers with the same id count as one: when the first has fired, none of them waits any more.
    ///
    /// The first sample of another link only says where the aircraft is: what lies between it and the sample
    /// before is no crossing, and a period with the gear down has ended.
    ///
    /// Where it throws, for lack of memory, nothing has fired: what holds on is reported by the next sample.
    FiredTriggers evaluate(const TriggerSample& sample);

    /// In load order.
    std::vector<ArmedTrigger> waiting() const;

    /// Back to the state after construction.
    void reset();

    /// In load order.
    const std::vector<ArmedTrigger>& triggers() const { return script_->triggers(); }
    /// All that have fired so far, in the order of firing.
    std::vector<FiredTrigger> fired() const;
    /// The fixes that were not found, in upper case, in the order in which they are first named.
    const std::vector<std::string>& unresolvedFixes() const { return script_->unresolvedFixes(); }

    /// The great-circle distance in nautical miles of two positions in degrees.
    static double distanceNm(double lat1, double lon1, double lat2, double lon2);

  private:
    struct Moment;

    void forgetOtherLink(const TriggerSample& sample);
    void trackGear(const TriggerSample& sample);
    Moment momentOf(const TriggerSample& sample) const;
    /// Appends what fires, in the order of firing.
    void walk(const TriggerSample& sample, std::vector<TriggerIndex>& fired);
    /// Whether the trigger fires now, which is then noted, and appended.
    bool fires(TriggerIndex index, const Moment& now, std::vector<TriggerIndex>& fired);
    /// As if these had not fired.
    void takeBack(const std::vector<TriggerIndex>& fired) noexcept;
    bool holds(const TriggerTest& test, const Moment& now) const;
    bool hasFired(TriggerIndex index) const { return firedAt_[script_->tests()[index].id].has_value(); }

    // Constant after construction
    std::shared_ptr<const ArmedScript> script_;

    // What has happened
    /// Of each sample on which something fired.
    std::vector<FiredTriggers> firings_;
    /// By id number.
    std::vector<std::optional<double>> firedAt_;
    /// In load order.
    std::vector<TriggerIndex> waiting_;
    std::optional<TriggerSample> previous_;
    /// The time of the first sample since which the gear is not known to have been up.
    std::optional<double> gearDownSince_;
};

} // namespace tarnly
