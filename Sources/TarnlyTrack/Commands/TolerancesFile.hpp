#pragma once

#include <filesystem>
#include <vector>

#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"

namespace tarnly::track {

/// Reads a file of tolerances, and tells what is wrong with it. Throws `UsageError` when there is an error in
/// it, after it was told, and `TrackError` when it cannot be read.
std::vector<Tolerance> usableTolerances(const CommandContext& context, const std::filesystem::path& file);

} // namespace tarnly::track
