#pragma once

#include <cstddef>
#include <string>

namespace tarnly {

/// The columns of a terminal that the text takes: one a character.
std::size_t widthOf(const std::string& text);

/// With spaces behind it, up to this width.
std::string padded(std::string text, std::size_t width);

} // namespace tarnly
