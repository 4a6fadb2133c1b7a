#include "TarnlyTrack/Output/Words.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace tarnly::track {
namespace {

namespace chrono = std::chrono;

/// Elapsed times beyond, which only a spoilt file has, would overflow.
constexpr double longestSeconds = 1e10;

void appendDigits(std::string& text, int value, int width) {
    for (int divisor = width == 4 ? 1000 : width == 3 ? 100 : 10; divisor > 0; divisor /= 10)
        text += static_cast<char>('0' + value / divisor % 10);
}

void appendDate(std::string& text, chrono::year_month_day date) {
    appendDigits(text, static_cast<int>(date.year()), 4);
    text += '-';
    appendDigits(text, static_cast<int>(static_cast<unsigned>(date.month())), 2);
    text += '-';
    appendDigits(text, static_cast<int>(static_cast<unsigned>(date.day())), 2);
}

void appendClock(std::string& text, chrono::hh_mm_ss<chrono::seconds> clock) {
    appendDigits(text, static_cast<int>(clock.hours().count()), 2);
    text += ':';
    appendDigits(text, static_cast<int>(clock.minutes().count()), 2);
    text += ':';
    appendDigits(text, static_cast<int>(clock.seconds().count()), 2);
}

} // namespace

Moment momentOf(Moment start, double elapsedSeconds) {
    const double seconds = std::clamp(elapsedSeconds, -longestSeconds, longestSeconds);
    return start + chrono::milliseconds(std::llround(seconds * 1000));
}

void appendFixed(std::string& text, double value, int decimals) {
    std::array<char, 400> digits{}; // the longest double has 309 before its point
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                      std::chars_format::fixed, decimals);
    std::string_view shown(digits.data(), static_cast<std::size_t>(result.ptr - digits.data()));
    if (decimals > 0) {
        shown = shown.substr(0, shown.find_last_not_of('0') + 1);
        if (shown.ends_with('.')) shown.remove_suffix(1);
    }
    text += shown == "-0" ? std::string_view("0") : shown;
}

std::string fixedText(double value, int decimals) {
    std::string text;
    appendFixed(text, value, decimals);
    return text;
}

void appendIsoTime(std::string& text, Moment moment) {
    constexpr Moment first = chrono::sys_days(chrono::year(0) / 1 / 1);
    constexpr Moment behindLast = chrono::sys_days(chrono::year(10'000) / 1 / 1);
    moment = std::clamp(moment, first, behindLast - chrono::milliseconds(1));
    const auto day = chrono::floor<chrono::days>(moment);
    const auto second = chrono::floor<chrono::seconds>(moment);
    appendDate(text, day);
    text += 'T';
    appendClock(text, chrono::hh_mm_ss(second - day));
    text += '.';
    appendDigits(text, static_cast<int>((moment - second).count()), 3);
    text += 'Z';
}

std::string isoTime(Moment moment) {
    std::string text;
    appendIsoTime(text, moment);
    return text;
}

std::optional<Moment> parseIsoTime(std::string_view text) {
    constexpr std::string_view pattern = "####-##-##T##:##:##";
    const auto number = [text](std::size_t at, std::size_t size) {
        int value = 0;
        std::from_chars(text.data() + at, text.data() + at + size, value);
        return value;
    };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto matches = [&](char c, char wanted) { return wanted == '#' ? isDigit(c) : c == wanted; };
    const auto whole = text.substr(0, pattern.size());
    if (whole.size() < pattern.size() || !text.ends_with('Z')) return std::nullopt;
    if (!std::equal(whole.begin(), whole.end(), pattern.begin(), matches)) return std::nullopt;
    auto fraction = std::string(text.substr(pattern.size(), text.size() - pattern.size() - 1));
    if (!fraction.empty()) {
        const bool isFraction = fraction.size() > 1 && fraction.size() <= 4 && fraction.front() == '.' &&
                                std::all_of(fraction.begin() + 1, fraction.end(), isDigit);
        if (!isFraction) return std::nullopt;
    }
    // An empty one is ".000".
    if (fraction.empty()) fraction = ".";
    fraction.resize(4, '0');
    int milliseconds = 0;
    std::from_chars(fraction.data() + 1, fraction.data() + fraction.size(), milliseconds);
    const chrono::year_month_day date{chrono::year(number(0, 4)),
                                      chrono::month(static_cast<unsigned>(number(5, 2))),
                                      chrono::day(static_cast<unsigned>(number(8, 2)))};
    const int hour = number(11, 2);
    const int minute = number(14, 2);
    const int second = number(17, 2);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return chrono::sys_days(date) + chrono::hours(hour) + chrono::minutes(minute) + chrono::seconds(second) +
           chrono::milliseconds(milliseconds);
}

std::string utcText(chrono::sys_seconds moment) {
    const auto day = chrono::floor<chrono::days>(moment);
    std::string text;
    appendDate(text, day);
    text += ' ';
    appendClock(text, chrono::hh_mm_ss(moment - day));
    return text + " UTC";
}

std::string localText(chrono::sys_seconds moment) {
    const std::time_t time = chrono::system_clock::to_time_t(moment);
    std::tm local{};
    if (localtime_r(&time, &local) == nullptr) return utcText(moment);
    std::array<char, 64> text{};
    const auto size = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %Z", &local);
    return {text.data(), size};
}

std::string durationText(double seconds) {
    const auto whole = std::llround(std::clamp(seconds, 0.0, longestSeconds));
    std::array<char, 64> text{};
    const int size = std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", whole / 3600,
                                   whole / 60 % 60, whole % 60);
    return {text.data(), static_cast<std::size_t>(size)};
}

std::string countText(std::size_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace tarnly::track
