#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TarnlyTrack/Log/LogSample.hpp"

namespace tarnly::track {

/// Samples from `begin` to before `end`, by their places in the log.
struct Stretch {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool operator==(const Stretch&) const = default;
};

/// Two samples that are further apart have a gap between them, where nobody knows what the aircraft did; so
/// have two of which the second is earlier, as in two logs that somebody has put together.
constexpr double longestStepSeconds = 3;

/// Whether there is one between samples of these times.
constexpr bool isGap(double earlier, double later) {
    return !(later >= earlier && later - earlier <= longestStepSeconds);
}

/// A position and attitude that stay for so long to the last digit are `frozen`.
constexpr double frozenSeconds = 5;

struct Position {
    /// Degrees, north and east positive: -90 to 90, -180 to 180.
    double lat = 0;
    double lon = 0;

    bool operator==(const Position&) const = default;
};

/// A trigger that fired.
struct FiredTrigger {
    std::string triggerId;
    std::string actionKind;
    double elapsedSeconds = 0;
    /// The place of the sample on which it fired; absent when it stands before all samples.
    std::optional<std::size_t> sample;
};

/// What a log has beside its samples and triggers.
struct LogFaults {
    /// Lines that are no log lines, or lack what their kind promises; the torn end does not count.
    std::size_t unreadableLines = 0;
    /// Log lines of a kind that is unknown here.
    std::size_t unknownLines = 0;
    /// Values that the format does not have: infinite ones, of another type, positions off the globe.
    std::size_t leftOutValues = 0;
    /// Samples without the altitude that each should have.
    std::size_t lackingAltitudes = 0;
    /// The log ends within a line that was being written.
    bool hasTornEnd = false;

    bool operator==(const LogFaults&) const = default;
};

/// A recording in memory, packed in columns: some 130 bytes a sample, 22 MB a day.
///
/// Samples are told by their places, from 0, in the order of the log. A plain value; read it from any thread.
class FlightLog {
  public:
    /// The next sample of the log. Its altitude of 0 is taken for unknown at the beginning and after a gap,
    /// until the simulator has told another one.
    void append(const LogSample& sample);
    /// A trigger that fired on the last sample.
    void append(FiredTrigger fired);

    std::size_t size() const { return columns_.front().size(); }

    /// The samples before time goes back: there another recording begins, which somebody has put behind.
    std::size_t firstRecording() const;

    double elapsedSeconds(std::size_t sample) const { return columns_.front()[sample]; }
    /// Absent where the log does not tell; altitude as in `append`.
    std::optional<double> value(Quantity quantity, std::size_t sample) const;
    std::optional<bool> value(Switch which, std::size_t sample) const;
    /// One number an engine.
    std::optional<std::span<const double>> value(Lever lever, std::size_t sample) const;
    std::optional<Position> position(std::size_t sample) const;

    /// All of one quantity, with `unknown` where the log does not tell.
    std::span<const double> column(Quantity quantity) const {
        return columns_[static_cast<std::size_t>(quantity)];
    }

    /// The longest list that the lever has: how many engines.
    std::size_t engines(Lever lever) const { return levers_[static_cast<std::size_t>(lever)].longest; }

    /// In the order of the log.
    const std::vector<FiredTrigger>& fired() const { return fired_; }

    /// The parts that gaps divide the log into, none of them empty.
    std::vector<Stretch> segments() const;

    /// Where position, altitude, height and attitude stay the same to the last digit for `frozenSeconds` at
    /// least: the simulator was paused. An aircraft that stands with its engine off may look alike. None goes
    /// across a gap or holds a sample without a position.
    std::vector<Stretch> frozen() const;

    LogFaults faults;

  private:
    struct LeverColumn {
        std::vector<double> numbers;
        /// Where the numbers of each sample end; they begin where those of the one before end.
        std::vector<std::uint32_t> ends;
        std::vector<bool> isKnown;
        std::size_t longest = 0;
    };

    void appendLever(std::size_t lever, const LogSample& sample);
    bool isGapBefore(std::size_t sample) const;
    bool isFrozenBetween(std::size_t sample, std::size_t next) const;

    std::array<std::vector<double>, quantityCount> columns_;
    /// 0 off, 1 on, 2 unknown.
    std::array<std::vector<std::uint8_t>, switchCount> switches_;
    std::array<LeverColumn, leverCount> levers_;
    std::vector<FiredTrigger> fired_;
    /// Whether the simulator has told an altitude since the last gap.
    bool isAltitudeTold_ = false;
};

} // namespace tarnly::track
