#pragma once

#include <string>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"

/// The simulator's saved situations as files. Blocking: call from a worker thread.
namespace tarnly {

/// Whatever in `directory` has the extension "sit", in the order of the file system; empty when there is no
/// such directory. Throws `std::filesystem::filesystem_error` when it cannot be read.
std::vector<FlightListing> listSituations(const std::string& directory);

bool situationExists(const std::string& path);

/// Where the simulator looks for the situation of that file's name, relative to its own folder: it loads none
/// from elsewhere.
std::string relativeSituationPath(const std::string& path);

} // namespace tarnly
