#pragma once

#include <string>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Flight/Values.hpp"

namespace tarnly::client {

// Values as people read them.

/// The shortest text that reads back as the same number.
std::string numberText(double value);

// What was recorded: one line each, in columns, with "-" for what is not known.

/// Time in seconds, position in degrees, altitude and height in feet, gear handle.
std::string describe(const TrackSample& sample);

std::string describe(const FiredTriggerEvent& event);

/// "2026-11-16 01:09:38", UTC.
std::string describe(const Date& date);

} // namespace tarnly::client
