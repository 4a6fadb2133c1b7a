#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TarnlySimulator/Flight/FlightModel.hpp"
#include "TarnlySimulator/World/Value.hpp"

namespace tarnly::simulator {

/// How a dataref is tied to the flight.
struct FlightBinding {
    const char* name;
    ValueType type;
    Value (*read)(const FlightModel& flight);
    /// None: read-only.
    void (*write)(FlightModel& flight, const Value& value);
};

/// One entry of the catalogue.
struct Dataref {
    std::string name;
    ValueType type = ValueType::single;
    bool isWritable = false;
    /// Registered by an add-on, which may come late.
    bool isAddOn = false;
    /// Its name is not UTF-8; it shows in an awkward catalogue only.
    bool isAwkward = false;
    /// Its place among the values of the flight; none: the value is just kept.
    std::optional<std::size_t> flightValue;
    Value kept = 0.0;
    std::int64_t id = 0;
};

/// What `stockDatarefs` may be asked for.
struct DatarefOptions {
    /// Fill up to so many entries with numbered ones.
    std::size_t datarefs = 0;
    /// The levers of all engines together are lists with an element for each engine rather than one number.
    bool leverLists = false;
    /// Leave out the flap lever's older name, `sim/cockpit2/controls/flap_ratio`.
    bool noFlapRatio = false;
};

/// Every dataref of the stand-in, without ids: those of the flight, a few hundred whose values are just kept,
/// those of an add-on, and an awkward one. The flight's values are counted through `flightDatarefs` and then
/// `leverDatarefs`.
std::vector<Dataref> stockDatarefs(const DatarefOptions& options);

/// The datarefs behind which stands the flight, but for those of `leverDatarefs`.
std::span<const FlightBinding> flightDatarefs();

/// The levers of all engines together: each one number, or each a list.
std::span<const FlightBinding> leverDatarefs(bool asLists);

} // namespace tarnly::simulator
