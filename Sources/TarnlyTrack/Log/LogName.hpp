#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

namespace tarnly::track {

/// When the recording was begun, in UTC, by the name that the companion has given its file:
/// "session-2026-11-16T010938Z.jsonl", or "session-2026-11-16T010938Z-2.jsonl" for a second one of that
/// second. Absent for a file that has been renamed, and for a moment that no calendar has: nothing in the
/// file tells.
std::optional<std::chrono::sys_seconds> startByName(const std::filesystem::path& file);

} // namespace tarnly::track
