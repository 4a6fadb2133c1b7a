#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "TarnlyCore/Script/ArmedScript.hpp"

namespace tarnly::track {

/// Does `work` with what looks fixes up in the navigation database `file`, else in the one that a companion
/// on this computer has made, or with an empty resolver where there is none. Throws `UsageError` for a file
/// that is none, `TrackError` when it could not be read throughout: otherwise fixes that nobody has looked
/// for would count as unknown.
void withFixes(const std::optional<std::filesystem::path>& file,
               const std::function<void(const FixResolver&)>& work);

} // namespace tarnly::track
