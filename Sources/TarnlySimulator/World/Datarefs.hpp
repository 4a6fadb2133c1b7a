#pragma once

#include <cstddef>
#include <cstdint>
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
    /// None: the value is just kept.
    const FlightBinding* binding = nullptr;
    Value kept = 0.0;
    std::int64_t id = 0;
};

/// Every dataref of the stand-in, without ids: those of the flight, a few hundred whose values are just kept,
/// and those of an add-on; filled up to `atLeast` entries with numbered ones.
std::vector<Dataref> stockDatarefs(std::size_t atLeast);

/// The datarefs behind which stands the flight.
std::span<const FlightBinding> flightDatarefs();

} // namespace tarnly::simulator
