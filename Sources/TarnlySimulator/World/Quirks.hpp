#pragma once

#include <chrono>
#include <span>
#include <string_view>

namespace tarnly::simulator {

/// The awkward habits of a simulator, each of which can be switched on and off at any time.
struct Quirks {
    bool mainMenu = false;
    bool trafficDisabled = false;
    bool durationRequired = true;
    bool lateDatarefs = false;
    bool nullEntries = false;
    bool nonFinite = false;
    bool silent = false;
    bool stuck = false;
    bool resultPerDataref = false;
    bool slow = false;
    /// How late everything is answered while `slow`.
    std::chrono::milliseconds slowBy{2000};
};

/// A switch of `Quirks` with the name that people use for it.
struct QuirkSwitch {
    const char* name;
    bool Quirks::*on;
    const char* meaning;
};

std::span<const QuirkSwitch> quirkSwitches();

/// Null for a name that is none.
const QuirkSwitch* quirkSwitchNamed(std::string_view name);

} // namespace tarnly::simulator
