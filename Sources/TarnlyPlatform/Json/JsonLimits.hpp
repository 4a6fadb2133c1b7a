#pragma once

#include <cstddef>

namespace tarnly {

/// The levels of nesting that a JSON text may have.
constexpr std::size_t deepestJson = 64;

} // namespace tarnly
