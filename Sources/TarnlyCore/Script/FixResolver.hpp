#pragma once

#include <functional>
#include <optional>
#include <string>

#include "TarnlyCore/Flight/Coordinate.hpp"

namespace tarnly {

/// Finds the position of a navigation fix by its identifier; absent when there is no such fix. Callable from
/// any thread.
using FixResolver = std::function<std::optional<Coordinate>(const std::string& ident)>;

} // namespace tarnly
