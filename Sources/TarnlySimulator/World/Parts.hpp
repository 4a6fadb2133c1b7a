#pragma once

#include <string_view>
#include <vector>

namespace tarnly::simulator {

/// The parts of `text` between one `separator` and the next, empty ones included.
std::vector<std::string_view> parts(std::string_view text, char separator);

} // namespace tarnly::simulator
