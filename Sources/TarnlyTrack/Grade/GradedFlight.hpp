#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::track {

/// What lies within this of a limit is at the limit: decimals as 1.1 are no exact doubles.
constexpr double limitSlack = 1e-6;

/// A recording as it is graded: what counts of it as flown, and what nobody knows. Of a log that has two
/// recordings, one behind the other, the first one. The log outlives it. A plain value.
class GradedFlight {
  public:
    explicit GradedFlight(const FlightLog& log);

    const FlightLog& log() const { return log_; }
    /// How many samples count; their times never go back.
    std::size_t size() const { return size_; }
    double time(std::size_t sample) const { return log_.elapsedSeconds(sample); }

    /// Whether nobody knows how the aircraft came from a sample to a later one: there is a gap between them,
    /// or it was put elsewhere, as by a saved flight.
    bool isBrokenBetween(std::size_t sample, std::size_t later) const;

    /// How long the values of a sample stood while the aircraft flew on: until the next sample, and 0 where
    /// it is broken between the two, while the flight was frozen, and at the end.
    double flownSeconds(std::size_t sample) const;

    /// The samples of these times, ends included; empty where there are none.
    Stretch samplesFrom(double begin, double end) const;

    /// When the trigger first fired, not before `earliest`; absent if it never did.
    std::optional<double> firedAt(const std::string& triggerId,
                                  double earliest = -std::numeric_limits<double>::infinity()) const;

    /// What passed between two moments, in seconds.
    struct Passed {
        double flown = 0;
        double frozen = 0;
        /// In gaps, while the aircraft was put elsewhere, and before or behind all samples.
        double unknown = 0;
    };
    Passed between(double begin, double end) const;

  private:
    enum class Step { flown, frozen, broken };

    Step stepFrom(std::size_t sample) const;

    const FlightLog& log_;
    std::size_t size_;
    /// Whether nothing moves from a sample to the next one, for so long that the flight was frozen.
    std::vector<bool> isFrozen_;
};

} // namespace tarnly::track
