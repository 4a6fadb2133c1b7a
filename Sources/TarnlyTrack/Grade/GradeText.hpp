#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "TarnlyTrack/Grade/Grade.hpp"

namespace tarnly::track {

// Grades in words, for people, and as JSON, for programs. A terminal may be given them.

/// "met         Circuit altitude: farthest 60 ft above 1500 ft, at 3:04"
std::string gradeLine(const Grade& grade);

/// "3 of 5 met, 1 not judged"
std::string gradesSum(const std::vector<Grade>& grades);

/// An object with the grades of the recording `log`, which was read from `file`, and how many were met.
std::string gradesJson(const std::filesystem::path& file, const FlightLog& log,
                       const std::vector<Grade>& grades);

} // namespace tarnly::track
