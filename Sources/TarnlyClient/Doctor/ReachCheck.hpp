#pragma once

#include <chrono>
#include <filesystem>
#include <functional>

#include "TarnlyClient/Doctor/Finding.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"

namespace tarnly::client {

/// Asks the companion on this computer, again and again, whether a device has reached it meanwhile. `show` is
/// called once, with how the companion stands when the waiting begins. Blocks for `wait` at most; throws what
/// asking throws.
Finding waitForADevice(const std::filesystem::path& dataFolder, std::chrono::milliseconds wait,
                       std::chrono::milliseconds limitOfAsking,
                       const std::function<void(const CompanionStatus&)>& show);

} // namespace tarnly::client
