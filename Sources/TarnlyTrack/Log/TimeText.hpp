#pragma once

#include <string>

namespace tarnly::track {

/// A moment of a recording's clock, or a length of time, as people read it: "12:04", "1:00:05". Begun seconds
/// do not count; "-" for what is no time.
std::string timeText(double seconds);

} // namespace tarnly::track
