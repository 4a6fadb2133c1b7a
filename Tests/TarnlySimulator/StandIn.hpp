#pragma once

#include <algorithm>
#include <boost/json/value.hpp>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlySimulator/Simulator.hpp"
#include "TarnlySimulator/World/WorldError.hpp"

namespace tarnly::test {

inline constexpr auto latitudeDataref = "sim/flightmodel/position/latitude";
inline constexpr auto landingLightsDataref = "sim/cockpit2/switches/landing_lights_on";
inline constexpr auto runningTimeDataref = "sim/time/total_running_time_sec";

/// Options of a stand-in for tests: ports of the system's choice, always the same ids, cruising.
inline simulator::SimulatorOptions standInOptions() {
    simulator::SimulatorOptions options;
    options.port = options.udpPort = 0;
    options.idSeed = 42;
    options.start = simulator::FlightPhase::cruise;
    return options;
}

/// How many datarefs clients see now.
inline std::size_t shownDatarefs(const simulator::World& world) {
    const auto& entries = world.datarefs().entries();
    return static_cast<std::size_t>(
        std::ranges::count_if(entries, [&](const auto& each) { return world.shows(each); }));
}

inline std::int64_t datarefId(const simulator::World& world, std::string_view name) {
    const auto* dataref = world.datarefs().named(name);
    if (dataref == nullptr) throw std::invalid_argument(std::string(name));
    return dataref->id;
}

inline std::int64_t commandId(const simulator::World& world, std::string_view name) {
    const auto* command = world.commands().named(name);
    if (command == nullptr) throw std::invalid_argument(std::string(name));
    return command->id;
}

/// The name of the error's case.
inline std::string codeOf(const simulator::WorldError& error) {
    const std::string form = error.what();
    return form.substr(0, form.find('('));
}

inline simulator::Value valueOf(const simulator::World& world, std::string_view name) {
    return world.read(*world.datarefs().named(name));
}

inline double numberOf(const simulator::World& world, std::string_view name) {
    return std::get<double>(valueOf(world, name));
}

inline void writeNumber(simulator::World& world, std::string_view name, double value) {
    world.write(datarefId(world, name), boost::json::value(value), std::nullopt);
}

} // namespace tarnly::test
