#pragma once

#include <string>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::client {

// What was recorded, as people read it: one line each, in columns, with "-" for what is not known.

/// Time in seconds, position in degrees, altitude and height in feet, gear handle.
std::string describe(const TrackSample& sample);

std::string describe(const FiredTriggerEvent& event);

/// "2026-11-16 01:09:38", UTC.
std::string describe(const Date& date);

} // namespace tarnly::client
