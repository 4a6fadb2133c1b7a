#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "TarnlyApp/CompanionOptions.hpp"

namespace tarnly {

/// What is wrong with the paths that the options name, of the navigation database and of the saved
/// situations, and what to do about it, on one line; absent where nothing is.
///
/// Waits for their disks for as long as `patience`: what has not answered by then, as on a mount whose server
/// has gone, is no mistake of the person's, and the look at it is left behind.
std::optional<std::string> problemOfPaths(const CompanionOptions& options,
                                          std::chrono::milliseconds patience);

} // namespace tarnly
