#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "TarnlySimulator/Flight/FlightPhase.hpp"
#include "TarnlySimulator/World/Quirks.hpp"

namespace tarnly::simulator {

/// How a stand-in simulator starts.
struct SimulatorOptions {
    /// Of the web interface and of the situation datagrams; 0: chosen by the system.
    std::uint16_t port = 8086;
    std::uint16_t udpPort = 49000;

    /// Shifts the route of the flight.
    std::uint64_t seed = 1;
    /// Ids are drawn from it; absent: other ids in every run, as in the real thing.
    std::optional<std::uint64_t> idSeed;
    FlightPhase start = FlightPhase::runway;
    /// Simulated seconds in one second.
    double speed = 1;

    /// The catalogues are filled up to these sizes; they are never smaller than the built-in ones.
    std::size_t datarefs = 0;
    std::size_t commands = 0;

    Quirks quirks;
    /// When the add-ons register their datarefs; absent: from the beginning, unless the quirk says otherwise.
    std::optional<std::chrono::milliseconds> lateDatarefsAfter;
    /// The age at which every WebSocket is dropped.
    std::optional<std::chrono::milliseconds> dropAfter;

    /// Told of each situation loaded, and of each datagram that was ignored, with one line for people.
    std::function<void(const std::string&)> onSituation;
    std::function<void(const std::string&)> onIgnored;
};

} // namespace tarnly::simulator
