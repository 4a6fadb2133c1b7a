#include "TarnlyPlatform/Base/Columns.hpp"

#include <algorithm>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {

std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return !isContinuation(c); }));
}

std::string padded(std::string text, std::size_t width) {
    const auto present = widthOf(text);
    return present < width ? text.append(width - present, ' ') : text;
}

} // namespace tarnly
