#pragma once

#include <string_view>
#include <vector>

namespace tarnly::simulator {

/// The parts of `text` between one `separator` and the next, empty ones included.
inline std::vector<std::string_view> parts(std::string_view text, char separator) {
    std::vector<std::string_view> out;
    while (true) {
        const auto end = text.find(separator);
        out.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return out;
        text.remove_prefix(end + 1);
    }
}

} // namespace tarnly::simulator
