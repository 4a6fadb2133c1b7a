#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "TarnlySimulator/World/Datarefs.hpp"
#include "TarnlySimulator/World/Value.hpp"

namespace tarnly::simulator {

/// What flies behind the datarefs of a world: the pilot's aircraft, or a recording.
///
/// Owned by its world, and called from that one's thread.
class FlightSource {
  public:
    FlightSource() = default;
    FlightSource(const FlightSource&) = delete;
    FlightSource& operator=(const FlightSource&) = delete;
    virtual ~FlightSource() = default;

    /// All datarefs of the world, without ids. Those with a `flightValue` are read and written here, the
    /// others are just kept, "sim/time/paused" among them. Asked for once.
    virtual std::vector<Dataref> datarefs() const = 0;

    /// The value of a dataref at this moment, by its `flightValue`.
    virtual Value read(std::size_t flightValue) const = 0;

    /// Writes it, likewise; also asked for by commands, whether the dataref is writable or not.
    virtual void write(std::size_t flightValue, const Value& value) = 0;

    /// Lets `seconds` of the flight pass.
    virtual void step(double seconds) = 0;

    /// Whether the flight shows a paused simulator by itself.
    virtual bool isPaused() const { return false; }

    /// Goes back to where it began.
    virtual void beginAnew() = 0;

    /// Jumps to where the situation of that file name begins. False: it does not, and goes on.
    virtual bool loadSituation(std::string_view fileName) = 0;

    /// What it is doing, in a word.
    virtual std::string_view phase() const = 0;
};

} // namespace tarnly::simulator
