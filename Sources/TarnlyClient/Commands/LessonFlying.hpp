#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Lesson/LessonCheck.hpp"

namespace tarnly::client {

/// What a person says of a lesson on the command line.
struct LessonOptions {
    std::filesystem::path file;
    bool isCheck = false;
    std::optional<std::filesystem::path> navigationDatabase;
    std::optional<std::chrono::milliseconds> wait;
    std::optional<std::chrono::milliseconds> time;
    std::optional<std::filesystem::path> save;
    std::optional<std::filesystem::path> dataFolder;
};

/// Flies a lesson in which nothing is wrong, from its briefing to its receipt. Blocks until that is done;
/// throws `ClientError` when it cannot be begun, or followed. Sets the exit code where it could not be ended
/// in order.
void flyLesson(CommandContext& context, const LessonOptions& options, const Lesson& lesson);

} // namespace tarnly::client
