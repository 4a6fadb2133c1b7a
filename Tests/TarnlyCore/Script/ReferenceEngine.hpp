#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/Script/Trigger.hpp"

namespace tarnly::test {

/// The trigger engine as plainly as it can be written: whole walks until one fires nothing, every condition
/// from its own fields. Quadratic; what the engine in use must agree with.
class ReferenceEngine {
  public:
    ReferenceEngine(std::vector<ArmedTrigger> triggers, const FixResolver& fixPosition);

    std::vector<FiredTrigger> evaluate(const TriggerSample& sample);
    std::vector<ArmedTrigger> waiting() const;
    void reset();

    const std::vector<FiredTrigger>& fired() const { return fired_; }
    const std::vector<std::string>& unresolvedFixes() const { return unresolvedFixes_; }
    /// How many walks the last evaluation took.
    int walks() const { return walks_; }

    static double distanceNm(double lat1, double lon1, double lat2, double lon2);

  private:
    bool walk(const TriggerSample& sample, std::vector<FiredTrigger>& result);
    bool holds(const TriggerCondition& condition, const TriggerSample& sample) const;
    bool reachesFix(const TriggerCondition& condition, const TriggerSample& sample) const;
    bool afterTrigger(const TriggerCondition& condition, const TriggerSample& sample) const;

    std::vector<ArmedTrigger> triggers_;
    std::vector<FiredTrigger> fired_;
    std::map<std::string, double> firedAt_;
    std::optional<TriggerSample> previous_;
    std::optional<double> gearDownSince_;
    std::map<std::string, Coordinate> fixCoordinates_;
    std::vector<std::string> unresolvedFixes_;
    int walks_ = 0;
};

} // namespace tarnly::test
