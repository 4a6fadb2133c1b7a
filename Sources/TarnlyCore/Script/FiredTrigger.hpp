#pragma once

#include <map>
#include <optional>
#include <string>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly {

/// A trigger that fired, with time and position of the sample on which it did.
struct FiredTrigger {
    std::string triggerID;
    std::string title;
    std::string actionKind;
    std::map<std::string, JSONValue> action;
    /// Seconds on the recording's clock.
    double elapsed = 0;
    /// Degrees.
    std::optional<double> lat;
    std::optional<double> lon;

    bool operator==(const FiredTrigger&) const = default;
};

} // namespace tarnly
