#include "TarnlyXPlane/Link/DecimalInteger.hpp"

#include <charconv>
#include <system_error>

namespace tarnly {

std::optional<std::int64_t> parseDecimalInteger(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

} // namespace tarnly
