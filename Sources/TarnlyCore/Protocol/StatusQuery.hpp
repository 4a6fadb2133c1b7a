#pragma once

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace tarnly {

/// Nobody tells how the companion stands. The text is for the person and says what to do.
class StatusQueryError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Where the companion with this data folder tells how it stands, to programs of the same person.
std::filesystem::path statusSocketIn(const std::filesystem::path& dataFolder);

/// Asks the companion with this data folder: a `CompanionStatus` as JSON, without a line feed. Blocks for
/// `limit` at most. Throws `StatusQueryError`.
std::string askForStatus(const std::filesystem::path& dataFolder,
                         std::chrono::milliseconds limit = std::chrono::seconds(5));

} // namespace tarnly
