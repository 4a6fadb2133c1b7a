#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::track {

/// What a recording says at any moment: between two samples what lies between them, on and off as in the one
/// before. Across a gap, and where the aircraft was put elsewhere, nobody knows what lies between: the values
/// stand still until the next sample.
///
/// A plain value; for one thread at a time.
class RecordedFlight {
  public:
    /// Of a log that has samples. It ends where time goes back, as in two logs that somebody has put
    /// together. Stands at the first sample.
    explicit RecordedFlight(FlightLog log);

    /// Seconds of the recording: those of its first and of its last sample.
    double begin() const { return times().front(); }
    double end() const { return times().back(); }
    /// Samples of the log behind that end.
    std::size_t leftOut() const { return log_.size() - count_; }

    /// Goes to a moment. Beyond begin and end the first and the last sample count.
    void goTo(double seconds);
    /// Where it stands.
    double moment() const { return moment_; }

    /// Whether it is known anywhere in the recording.
    bool has(Quantity quantity) const;
    bool has(Switch which) const;
    /// How many engines the lever has; 0 where the recording does not tell.
    std::size_t engines(Lever lever) const { return log_.engines(lever); }

    /// The value now; `unknown` where the recording does not tell.
    double number(Quantity quantity) const;
    std::optional<bool> isOn(Switch which) const;
    /// One number an engine, of which there may be fewer than `engines`.
    std::vector<double> numbers(Lever lever) const;

    // Derived, as in an export; `unknown` likewise, and where the aircraft was put elsewhere.

    double groundSpeedKt() const;
    /// True, degrees from 0 to below 360.
    double trackDeg() const;
    double verticalSpeedFtMin() const;

    /// Whether the simulator was paused, as far as the recording tells.
    bool isPaused() const;

  private:
    std::span<const double> times() const { return log_.column(Quantity::elapsedSeconds).first(count_); }
    /// Whether the aircraft flew from a sample to the one behind it.
    bool isFlown(std::size_t sample) const;
    /// Whether it was put elsewhere meanwhile.
    bool isJump(std::size_t sample) const;
    template <typename Of>
    double between(const Of& of) const;
    template <typename Of>
    double angleBetween(const Of& of) const;
    template <typename Of>
    double derived(std::size_t sample, Of member) const;

    FlightLog log_;
    std::size_t count_;
    std::vector<Stretch> frozen_;
    double moment_ = 0;
    /// The sample before, or at, the moment, and how far it is to the one behind, from 0 to below 1.
    std::size_t sample_ = 0;
    double part_ = 0;
};

} // namespace tarnly::track
