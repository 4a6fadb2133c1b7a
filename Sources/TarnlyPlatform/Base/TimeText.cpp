#include "TarnlyPlatform/Base/TimeText.hpp"

#include <cmath>
#include <cstdint>

namespace tarnly {
namespace {

/// Beyond it a double does not count seconds.
constexpr double longest = 1e15;

std::string twoDigits(std::int64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); }

} // namespace

std::string timeText(double seconds) {
    if (std::isnan(seconds) || std::abs(seconds) > longest) return "-";
    const auto whole = static_cast<std::int64_t>(std::floor(std::abs(seconds)));
    const auto hours = whole / 3600;
    const auto minutes = whole / 60 % 60;
    const auto sign = std::signbit(seconds) && whole > 0 ? "-" : "";
    const auto start = hours > 0 ? std::to_string(hours) + ":" + twoDigits(minutes) : std::to_string(minutes);
    return sign + start + ":" + twoDigits(whole % 60);
}

} // namespace tarnly
