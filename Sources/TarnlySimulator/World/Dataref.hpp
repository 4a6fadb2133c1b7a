#pragma once

#include <cstdint>
#include <string>

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

} // namespace tarnly::simulator
