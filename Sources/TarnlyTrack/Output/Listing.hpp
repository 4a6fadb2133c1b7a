#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Log/FlightSummary.hpp"

namespace tarnly::track {

// A recording in words, for people, and as JSON, for programs. `file` is where it was read from: its name
// tells when the recording was begun. Texts for people may be given to a terminal.

/// One line: when, how long, how far, how high, what fired and what is missing.
std::string listingLine(const std::filesystem::path& file, const FlightSummary& summary);

/// The same as an object.
std::string listingJson(const std::filesystem::path& file, const FlightSummary& summary);

/// The same in full, line by line, with the triggers: when and where they fired; and the gaps.
std::vector<std::string> fullLines(const std::filesystem::path& file, const FlightLog& log);

/// The same as an object.
std::string fullJson(const std::filesystem::path& file, const FlightLog& log);

/// What is wrong with a log, "2 unreadable lines, torn end"; empty where nothing is.
std::string faultsText(const LogFaults& faults);

} // namespace tarnly::track
