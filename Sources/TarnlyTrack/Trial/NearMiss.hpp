#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/Script/Trigger.hpp"
#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Trial/ScriptTrial.hpp"

namespace tarnly::track {

/// Says of triggers that did not fire why, and how near they came. What it is made of outlives it.
class NearMisses {
  public:
    /// `links` has one for each sample; `fired` is all that did.
    NearMisses(const FlightLog& log, std::span<const std::int64_t> links,
               const std::vector<tarnly::FiredTrigger>& fired, const FixResolver& fixPosition)
        : log_(log), links_(links), fired_(fired), fixPosition_(fixPosition) {}

    Miss of(const ArmedTrigger& trigger) const;

  private:
    struct Nearest;
    struct Height;

    Nearest nearest(const TriggerCondition& condition) const;
    Nearest toFix(const TriggerCondition& condition) const;
    Nearest toHeight(const Height& height, double feet, bool isClimbing) const;
    Nearest toGearDelay(double seconds) const;
    Nearest toTime(double seconds) const;
    Nearest toTrigger(const std::string& id, double seconds) const;

    double end() const { return log_.size() == 0 ? 0 : log_.elapsedSeconds(log_.size() - 1); }
    std::string at(std::size_t sample) const;

    const FlightLog& log_;
    const std::span<const std::int64_t> links_;
    const std::vector<tarnly::FiredTrigger>& fired_;
    const FixResolver& fixPosition_;
};

} // namespace tarnly::track
