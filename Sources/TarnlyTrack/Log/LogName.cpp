#include "TarnlyTrack/Log/LogName.hpp"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::track {
namespace {

constexpr std::string_view pattern = "session-####-##-##T######Z";

bool fits(std::string_view name) {
    return name.size() == pattern.size() &&
           std::equal(name.begin(), name.end(), pattern.begin(),
                      [](char c, char wanted) { return wanted == '#' ? isDigit(c) : c == wanted; });
}

int number(std::string_view name, std::size_t begin, std::size_t size) {
    int value = 0;
    std::from_chars(name.data() + begin, name.data() + begin + size, value);
    return value;
}

/// "" and "-2" may stand behind the moment.
bool isNumbering(std::string_view rest) {
    return rest.empty() || (rest.size() > 1 && rest.front() == '-' && rest[1] != '0' &&
                            std::all_of(rest.begin() + 1, rest.end(), isDigit));
}

} // namespace

std::optional<std::chrono::sys_seconds> startByName(const std::filesystem::path& file) {
    namespace chrono = std::chrono;
    const auto stem = file.stem().string();
    const auto name = std::string_view(stem).substr(0, pattern.size());
    const bool isOurs =
        file.extension() == ".jsonl" && fits(name) && isNumbering(std::string_view(stem).substr(name.size()));
    if (!isOurs) return std::nullopt;
    const chrono::year_month_day day{chrono::year(number(name, 8, 4)),
                                     chrono::month(static_cast<unsigned>(number(name, 13, 2))),
                                     chrono::day(static_cast<unsigned>(number(name, 16, 2)))};
    const int hour = number(name, 19, 2);
    const int minute = number(name, 21, 2);
    const int second = number(name, 23, 2);
    if (!day.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return chrono::sys_days(day) + chrono::hours(hour) + chrono::minutes(minute) + chrono::seconds(second);
}

} // namespace tarnly::track
