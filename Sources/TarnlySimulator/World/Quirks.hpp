#pragma once

#include <chrono>
#include <span>
#include <string_view>

namespace tarnly::simulator {

/// The awkward habits of a simulator, each of which can be switched on and off at any time.
struct Quirks {
    bool mainMenu = false;
    bool trafficDisabled = false;
    bool trafficDisabledPlain = false;
    bool tooOld = false;
    bool handshakeRefused = false;
    bool handshakeLate = false;
    bool durationRequired = true;
    bool lateDatarefs = false;
    bool nullEntries = false;
    bool awkwardCatalogue = false;
    bool nonFinite = false;
    bool silent = false;
    bool valuesStop = false;
    bool midMessage = false;
    bool pingsUnanswered = false;
    bool idleClose = false;
    bool stuck = false;
    bool resultPerDataref = false;
    bool slow = false;

    /// How late a WebSocket's handshake is answered while `handshakeLate`.
    std::chrono::milliseconds handshakeLateBy{15'000};
    /// How long a connection may be without traffic while `idleClose`.
    std::chrono::milliseconds idleCloseAfter{60'000};
    /// How late everything is answered while `slow`.
    std::chrono::milliseconds slowBy{2000};
};

/// A switch of `Quirks` with the name that people use for it.
struct QuirkSwitch {
    const char* name;
    bool Quirks::*on;
    const char* meaning;
    /// The time that belongs to it; null for most.
    std::chrono::milliseconds Quirks::*time = nullptr;
};

std::span<const QuirkSwitch> quirkSwitches();

/// Null for a name that is none. Words may be parted by "_" as well as by "-".
const QuirkSwitch* quirkSwitchNamed(std::string_view name);

} // namespace tarnly::simulator
