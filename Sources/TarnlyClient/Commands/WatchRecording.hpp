#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "TarnlyClient/Commands/Commands.hpp"

namespace tarnly::client {

/// Prints the triggers that fire in the companion's recording, and with --json the samples too, until
/// `count` triggers were shown, `time` has passed or a signal comes. Throws as `RecordingFollower::run`.
void watchRecording(const CommandContext& context, std::optional<std::int64_t> count,
                    std::optional<std::chrono::milliseconds> time);

} // namespace tarnly::client
