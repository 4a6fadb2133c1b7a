#include "TarnlyClient/Output/ReadableText.hpp"

#include <chrono>
#include <iomanip>
#include <locale>
#include <optional>
#include <sstream>

#include "TarnlyPlatform/Base/NumberText.hpp"

namespace tarnly::client {
namespace {

std::ostringstream newLine() {
    std::ostringstream line;
    line.imbue(std::locale::classic());
    line << std::fixed << std::setfill(' ');
    return line;
}

void addNumber(std::ostream& line, int width, int decimals, std::optional<double> value) {
    line << std::setw(width);
    if (value) {
        line << std::setprecision(decimals) << *value;
    } else {
        line << '-';
    }
}

void addTime(std::ostream& line, double seconds) {
    addNumber(line, 9, 2, seconds);
    line << " s  ";
}

std::string gearText(std::optional<bool> isDown) {
    if (!isDown) return "-";
    return *isDown ? "down" : "up";
}

} // namespace

std::string numberText(double value) {
    std::string text;
    appendNumber(text, value);
    return text;
}

std::string describe(const TrackSample& sample) {
    auto line = newLine();
    addTime(line, sample.elapsedSeconds);
    addNumber(line, 9, 5, sample.lat);
    addNumber(line, 11, 5, sample.lon);
    line << "  altitude";
    addNumber(line, 6, 0, sample.altitudeFt);
    line << " ft  height";
    addNumber(line, 6, 0, sample.aglFt);
    line << " ft  gear " << gearText(sample.gearDown);
    return line.str();
}

std::string describe(const FiredTriggerEvent& event) {
    auto line = newLine();
    addTime(line, event.elapsedSeconds);
    line << "fired " << event.triggerId << "  (" << event.actionKind << ')';
    return line.str();
}

std::string describe(const Date& date) {
    namespace chrono = std::chrono;
    // The calendar has no years beyond; a NaN cannot come.
    constexpr chrono::sys_days first = chrono::year(-9999) / 1 / 1;
    constexpr chrono::sys_days behindLast = chrono::year(10'000) / 1 / 1;
    using Exact = decltype(date.time);
    const auto time = chrono::floor<chrono::seconds>(
        std::clamp(date.time, Exact(first), Exact(behindLast - chrono::seconds(1))));
    const auto day = chrono::floor<chrono::days>(time);
    const chrono::year_month_day calendar(day);
    const chrono::hh_mm_ss clock(time - day);
    auto line = newLine();
    line << std::setfill('0') << std::setw(4) << int(calendar.year()) << '-' << std::setw(2)
         << unsigned(calendar.month()) << '-' << std::setw(2) << unsigned(calendar.day()) << ' '
         << std::setw(2) << clock.hours().count() << ':' << std::setw(2) << clock.minutes().count() << ':'
         << std::setw(2) << clock.seconds().count();
    return line.str();
}

} // namespace tarnly::client
