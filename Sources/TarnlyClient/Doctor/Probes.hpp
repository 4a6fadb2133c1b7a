#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Doctor/Judgement.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

/// How the doctor looks at the world. Each blocks for its `limit` at most, also where a mount hangs or the
/// system does not come back from looking a name up, and throws nothing that a look could meet.
namespace tarnly::client {

/// Asks at all of these places at once for the companion's page.
std::vector<PageProbe> probePages(const std::vector<Endpoint>& places, std::chrono::milliseconds limit);

/// Asks the simulator's web API what it is and whether it has a flight.
SimulatorProbe probeSimulator(const Endpoint& simulator, std::chrono::milliseconds limit);

/// Pairs with the companion, and asks for a value that every flight has. Within twice the limit.
ValueProbe probeValues(const Endpoint& companion, const std::optional<std::string>& password,
                       std::chrono::milliseconds limit);

/// Has a thread of its own look at `path`, which is left behind where a mount hangs.
FolderProbe probeFolder(const std::filesystem::path& path, std::function<void(FolderProbe&)> look,
                        std::chrono::milliseconds limit);

// Looks for `probeFolder`. What they throw, or put down as the failure, is what is wrong.

/// Counts the saved flights of a folder.
void lookAtSituations(FolderProbe& folder);

/// Whether it is a navigation database, as far as can be told.
void lookAtDatabase(FolderProbe& file);

/// The room in a folder, and whether files can be made there.
void lookAtDisk(FolderProbe& folder);

/// Whether the file is a JSON object; the count is 0 where there is none.
void lookAtSettings(FolderProbe& file);

/// The password in this settings file; absent where there is none, or it cannot be read.
std::optional<std::string> passwordIn(const std::filesystem::path& settings, std::chrono::milliseconds limit);

} // namespace tarnly::client
