#pragma once

#include <chrono>

#include "TarnlyPlatform/Base/Clock.hpp"

/// For tests that are not about time.
namespace tarnly::test {

inline SystemClock realTime;

/// More than anything takes, on however busy a machine.
inline constexpr std::chrono::seconds patience(60);

} // namespace tarnly::test
