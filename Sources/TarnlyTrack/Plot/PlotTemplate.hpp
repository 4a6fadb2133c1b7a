#pragma once

#include <string_view>

namespace tarnly::track {

/// The page that draws flights, made by `web/plot/build`: HTML with script and style in it. The flights
/// belong in the place of `plotPlaceholder`, which it has once.
std::string_view plotTemplate();

constexpr std::string_view plotPlaceholder = "@flights@";

} // namespace tarnly::track
