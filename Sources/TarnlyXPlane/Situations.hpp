#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"

/// The simulator's saved situations: the files, and the datagram that has one loaded.
namespace tarnly {

struct SituationList {
    std::vector<FlightListing> flights;
    /// How many are left out, as their names or that of their directory are not UTF-8: nobody could ask for
    /// them.
    std::size_t leftOut = 0;
    /// Why nobody can tell whether there is such a directory; empty where that is known.
    std::string failure{};
};

/// Whatever in `directory` has the extension "sit", in the order of the file system; nothing when there is no
/// such directory, or nobody can tell. Throws `std::filesystem::filesystem_error` when it cannot be read.
/// Blocking, perhaps for good where a mount hangs, as is `situationExists`.
SituationList listSituations(const std::string& directory);

bool situationExists(const std::string& path);

/// Where the simulator looks for the situation of that file's name, relative to its own folder: it loads none
/// from elsewhere.
std::string relativeSituationPath(const std::string& path);

/// The 161 bytes of the datagram that makes the simulator load a situation: the label "SIMO" and a zero, the
/// mode (1, load) as 32 bits little-endian, the path in 150 bytes filled up with zeros, two zeros.
/// `relativePath`, UTF-8, is relative to the simulator's folder; what exceeds 150 bytes is cut off.
std::vector<std::byte> buildSimoLoadSituationPacket(std::string_view relativePath);

} // namespace tarnly
