#pragma once

#include <string>

namespace tarnly {

/// A length of time in seconds, or a moment of a recording's clock, as people read it: "12:04", "1:00:05".
/// Begun seconds do not count; "-" for what is no time.
std::string timeText(double seconds);

} // namespace tarnly
