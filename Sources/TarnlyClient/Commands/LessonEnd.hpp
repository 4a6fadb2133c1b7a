#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Lesson/LessonFlight.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly::client {

// What surrounds the flight of a lesson: each blocks, and throws what is said.

/// Ends the recording where it is the lesson's own, and brings `flight` up to its end. Throws `ClientError`.
void endRecording(const CommandContext& context, const Endpoint& companion, bool isRecordingOwn,
                  LessonFlight& flight);

/// Where the recordings of a lesson are, asked for while they are under way: their paths, where the companion
/// runs on this computer with the data folder `dataFolder`, or the usual one; else words that say so.
class RecordingPaths {
  public:
    RecordingPaths(const Endpoint& companion, const std::optional<std::filesystem::path>& dataFolder);

    /// One for each part of the flight; `companion` is where the companion is now.
    std::vector<std::string> ofParts(std::size_t count, const Endpoint& companion) const;

  private:
    const std::optional<std::filesystem::path> dataFolder_;
    const std::optional<std::string> first_;
};

/// Puts all that the flight has told into a new file, in the form of a recording. Throws `ClientError`.
void saveFlight(const std::filesystem::path& file, const LessonFlight& flight);

} // namespace tarnly::client
