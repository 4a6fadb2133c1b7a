#include "TarnlyTrack/Plot/PictureStrips.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "TarnlyPlatform/Base/TimeText.hpp"
#include "TarnlyTrack/Plot/PictureMarks.hpp"

namespace tarnly::track {
namespace {

/// A round step of time, in seconds, of which about `wanted` fit.
double timeStep(double seconds, double wanted) {
    for (const double step : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600}) {
        if (seconds / step <= wanted) return step;
    }
    return 86400 * std::ceil(seconds / 86400 / wanted);
}

double longest(const std::vector<PlotFlight>& flights) {
    double result = 1;
    for (const auto& flight : flights)
        result = std::max(result, flight.seconds);
    return result;
}

double xOf(double at, double seconds) {
    return picture::left + std::max(at, 0.0) / seconds * (picture::right - picture::left);
}

void drawTime(Drawing& drawing, double top, double seconds) {
    const double step = timeStep(seconds, 10);
    for (double tick = 0; tick <= seconds; tick += step) {
        const double x = xOf(tick, seconds);
        drawing.line(x, top, x, top + stripHeight, "grid");
        drawing.text(x, top + stripHeight + 16, "soft middle", timeText(tick));
    }
}

/// Grey where nothing was recorded, or while the simulator was paused; only where that is one flight's.
void drawStandstill(Drawing& drawing, const PlotFlight& flight, double top, double seconds) {
    for (const auto* stretches : {&flight.gaps, &flight.frozen}) {
        for (const auto& [from, to] : *stretches) {
            const double x = xOf(from, seconds);
            drawing.box(x, top, std::max(1.0, xOf(to, seconds) - x), stripHeight, "gap");
        }
    }
}

/// On the lines, what scripts would have done.
template <typename YOf>
void drawMarks(Drawing& drawing, const PlotFlight& flight, std::size_t place, std::size_t key, double seconds,
               const YOf& yOf) {
    if (flight.lines[key].empty()) return;
    const auto& line = flight.lines[key].front();
    for (const auto& mark : marksOf(flight)) {
        if (mark.kind == PictureMark::Kind::fired) continue;
        const auto next = std::lower_bound(line.at.begin(), line.at.end(), mark.at);
        if (next == line.at.end() || *next != mark.at) continue;
        const auto value = line.value[static_cast<std::size_t>(next - line.at.begin())];
        drawMark(drawing, mark.kind, place, xOf(mark.at, seconds), yOf(value));
    }
}

} // namespace

void drawStrip(Drawing& drawing, const std::vector<PlotFlight>& flights, std::size_t key,
               const std::string& title, double top) {
    const double seconds = longest(flights);
    Range range;
    for (const auto& flight : flights) {
        for (const auto& line : flight.lines[key])
            std::for_each(line.value.begin(), line.value.end(), [&](double value) { range.add(value); });
    }
    drawing.text(picture::left, top - 8, "bold", title);
    if (range.isEmpty()) return drawing.text(picture::left, top + 20, "soft", "Nothing was recorded of it.");
    const double step = std::max(1.0, roundLength(std::max(range.length(), 4.0) / 4));
    const double low = std::floor(range.low / step) * step;
    const double high = std::max(low + step, std::ceil(range.high / step) * step);
    const auto yOf = [&](double value) { return top + stripHeight * (high - value) / (high - low); };

    if (flights.size() == 1) drawStandstill(drawing, flights.front(), top, seconds);
    drawTime(drawing, top, seconds);
    for (double tick = low; tick <= high; tick += step) {
        drawing.line(picture::left, yOf(tick), picture::right, yOf(tick), "grid");
        drawing.text(picture::left - 6, yOf(tick) + 4, "soft end", decimal(tick, 0));
    }
    for (std::size_t place = 0; place < flights.size(); ++place) {
        for (const auto& line : flights[place].lines[key]) {
            const auto pointOf = [&](std::size_t i) {
                return std::pair{xOf(line.at[i], seconds), yOf(line.value[i])};
            };
            drawing.path(polyline(line.at.size(), line.breaks, pointOf), "line " + kindOf('i', place));
        }
    }
    for (std::size_t place = 0; place < flights.size(); ++place)
        drawMarks(drawing, flights[place], place, key, seconds, yOf);
}

} // namespace tarnly::track
