#include "TarnlyTrack/Plot/PlotPicture.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <string_view>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::track {
namespace {

constexpr double width = 1000;
constexpr double left = 70;
constexpr double right = width - 40;
constexpr double trackHeight = 560;
constexpr double stripHeight = 170;
constexpr double stripGap = 46;
constexpr double metresPerMile = 1852;
constexpr double metresPerDegree = 6'371'009 * std::numbers::pi / 180;

constexpr std::string_view style =
    "text{font:13px system-ui,'DejaVu Sans',sans-serif;fill:#1b1f24}.soft{fill:#57606a}"
    ".end{text-anchor:end}.middle{text-anchor:middle}.bold{font-weight:bold}"
    ".panel{fill:#f6f8fa;stroke:#d8dee4}.grid{stroke:#d8dee4}.gap{fill:#e3e7eb}.scale{fill:none;stroke:#"
    "1b1f24}"
    ".line{fill:none;stroke-width:1.8;stroke-linejoin:round}"
    ".i0{stroke:#0b5cad}.i1{stroke:#a83c00;stroke-dasharray:9 4}.i2{stroke:#00694a;stroke-dasharray:3 3}"
    ".i3{stroke:#8b2f86;stroke-dasharray:10 3 2 3}.i4{stroke:#0b5cad;stroke-dasharray:16 3}"
    ".i5{stroke:#a83c00;stroke-dasharray:4 6}.i6{stroke:#00694a;stroke-dasharray:16 3 2 3 2 3}"
    ".i7{stroke:#8b2f86;stroke-dasharray:6 2}"
    ".f0,.f4{fill:#0b5cad}.f1,.f5{fill:#a83c00}.f2,.f6{fill:#00694a}.f3,.f7{fill:#8b2f86}";

/// `text` as XML may have it: well-formed, without control characters, with its markup escaped.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : printable(text)) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

std::string decimal(double value, int digits) {
    std::array<char, 64> text{};
    const int size = std::snprintf(text.data(), text.size(), "%.*f", digits, value);
    return {text.data(), static_cast<std::size_t>(std::max(size, 0))};
}

std::string pixels(double value) { return decimal(value, 1); }

std::string timeText(double seconds) {
    const auto whole = static_cast<long long>(seconds);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    return text.data();
}

struct Range {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void add(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    bool isEmpty() const { return low > high; }
    double length() const { return high - low; }
};

/// 1, 2 or 5 times a power of ten: the greatest that is not above `length`.
double roundLength(double length) {
    const double power = std::pow(10, std::floor(std::log10(length)));
    for (const double digit : {5.0, 2.0}) {
        if (digit * power <= length) return digit * power;
    }
    return power;
}

/// A round step of time, in seconds, of which about `wanted` fit.
double timeStep(double seconds, double wanted) {
    for (const double step : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600}) {
        if (seconds / step <= wanted) return step;
    }
    return 86400 * std::ceil(seconds / 86400 / wanted);
}

/// The parts of a drawing, one after the other.
class Drawing {
  public:
    void text(double x, double y, std::string_view kind, const std::string& content) {
        out_ += "<text x=\"" + pixels(x) + "\" y=\"" + pixels(y) + "\" class=\"" + std::string(kind) + "\">" +
                escaped(content) + "</text>\n";
    }

    void box(double x, double y, double boxWidth, double height, std::string_view kind) {
        out_ += "<rect x=\"" + pixels(x) + "\" y=\"" + pixels(y) + "\" width=\"" + pixels(boxWidth) +
                "\" height=\"" + pixels(height) + "\" class=\"" + std::string(kind) + "\"/>\n";
    }

    void path(const std::string& path, const std::string& kind) {
        if (path.empty()) return;
        out_ += "<path class=\"" + kind + "\" d=\"" + path + "\"/>\n";
    }

    void line(double x1, double y1, double x2, double y2, std::string_view kind) {
        path("M" + pixels(x1) + " " + pixels(y1) + "L" + pixels(x2) + " " + pixels(y2), std::string(kind));
    }

    std::string take(double height) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
               "viewBox=\"0 0 " +
               pixels(width) + " " + pixels(height) + "\" width=\"" + pixels(width) + "\" height=\"" +
               pixels(height) + "\" role=\"img\">\n<title>Recorded flights</title>\n<style>" +
               std::string(style) + "</style>\n<rect width=\"" + pixels(width) + "\" height=\"" +
               pixels(height) + "\" fill=\"#ffffff\"/>\n" + out_ + "</svg>\n";
    }

  private:
    std::string out_;
};

/// A polyline with its breaks; a point alone is a dot.
template <typename PointOf>
std::string polyline(std::size_t count, const std::vector<std::size_t>& breaks, const PointOf& pointOf) {
    std::string result;
    auto nextBreak = breaks.begin();
    for (std::size_t i = 0; i < count; ++i) {
        const bool isBroken = nextBreak != breaks.end() && *nextBreak == i;
        if (isBroken) ++nextBreak;
        const auto [x, y] = pointOf(i);
        result += (isBroken ? "M" : "L") + pixels(x) + " " + pixels(y) + (isBroken ? "h0.1" : "");
    }
    return result;
}

std::string letter(std::size_t place) { return {static_cast<char>('A' + static_cast<char>(place))}; }

std::string kindOf(char name, std::size_t place) { return name + std::to_string(place % 8); }

/// The tracks, on a plane that touches the earth at the first position.
class TrackPanel {
  public:
    TrackPanel(const std::vector<PlotFlight>& flights, double top) : flights_(flights), top_(top) {
        for (const auto& flight : flights)
            measure(flight.track);
        const double inside = std::min((right - left - 60) / std::max(east_.length(), 1.0),
                                       (trackHeight - 80) / std::max(north_.length(), 1.0));
        perMetre_ = std::min(inside, 1.0);
    }

    void draw(Drawing& drawing) const {
        drawing.box(left, top_, right - left, trackHeight, "panel");
        if (east_.isEmpty()) return drawing.text(left + 20, top_ + 30, "soft", "No position was recorded.");
        for (std::size_t place = 0; place < flights_.size(); ++place)
            drawTrack(drawing, flights_[place].track, place);
        for (std::size_t place = 0; place < flights_.size(); ++place)
            drawTriggers(drawing, flights_[place], place);
        drawScale(drawing);
    }

  private:
    struct Point {
        double x;
        double y;
    };

    void measure(const PlotTrack& track) {
        for (std::size_t i = 0; i < track.at.size(); ++i) {
            if (east_.isEmpty()) {
                middle_ = {track.lat[i], track.lon[i]};
                perLongitude_ =
                    metresPerDegree * std::max(0.01, std::cos(track.lat[i] * std::numbers::pi / 180));
            }
            east_.add(east(track.lon[i]));
            north_.add(north(track.lat[i]));
        }
    }

    double east(double lon) const { return std::remainder(lon - middle_.lon, 360) * perLongitude_; }
    double north(double lat) const { return (lat - middle_.lat) * metresPerDegree; }

    Point point(double lat, double lon) const {
        return {(left + right) / 2 + (east(lon) - (east_.low + east_.high) / 2) * perMetre_,
                top_ + trackHeight / 2 - (north(lat) - (north_.low + north_.high) / 2) * perMetre_};
    }

    void drawTrack(Drawing& drawing, const PlotTrack& track, std::size_t place) const {
        const auto pointOf = [&](std::size_t i) { return point(track.lat[i], track.lon[i]); };
        drawing.path(polyline(track.at.size(), track.breaks, pointOf), "line " + kindOf('i', place));
    }

    void drawTriggers(Drawing& drawing, const PlotFlight& flight, std::size_t place) const {
        const auto& track = flight.track;
        for (std::size_t number = 0; number < flight.fired.size(); ++number) {
            // The moments at which triggers fired are kept in the track.
            const auto next = std::lower_bound(track.at.begin(), track.at.end(), flight.fired[number].at);
            if (next == track.at.end() || *next != flight.fired[number].at) continue;
            const auto index = static_cast<std::size_t>(next - track.at.begin());
            const auto [x, y] = point(track.lat[index], track.lon[index]);
            drawing.path("M" + pixels(x) + " " + pixels(y) + "l-5 -9h10z", kindOf('f', place));
            const auto label = (flights_.size() > 1 ? letter(place) : "") + std::to_string(number + 1);
            drawing.text(x, y - 12, "middle bold", label);
        }
    }

    void drawScale(Drawing& drawing) const {
        const double miles = roundLength(180 / perMetre_ / metresPerMile);
        const double length = miles * metresPerMile * perMetre_;
        const double y = top_ + trackHeight - 16;
        drawing.path("M" + pixels(left + 16) + " " + pixels(y - 6) + "v6h" + pixels(length) + "v-6", "scale");
        const int digits = std::max(0, static_cast<int>(-std::floor(std::log10(miles))));
        drawing.text(left + 16 + length / 2, y - 8, "middle", decimal(miles, digits) + " nm");
        drawing.path("M" + pixels(right - 24) + " " + pixels(top_ + 10) + "l7 18l-7 -5l-7 5z", "");
        drawing.text(right - 24, top_ + 44, "middle", "N");
    }

    const std::vector<PlotFlight>& flights_;
    double top_;
    Range east_;
    Range north_;
    Position middle_;
    double perLongitude_ = 1;
    double perMetre_ = 1;
};

double longest(const std::vector<PlotFlight>& flights) {
    double result = 1;
    for (const auto& flight : flights)
        result = std::max(result, flight.seconds);
    return result;
}

double xOf(double at, double seconds) { return left + std::max(at, 0.0) / seconds * (right - left); }

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

void drawStrip(Drawing& drawing, const std::vector<PlotFlight>& flights, std::size_t key,
               const std::string& title, double top) {
    const double seconds = longest(flights);
    Range range;
    for (const auto& flight : flights) {
        for (const auto& line : flight.lines[key])
            std::for_each(line.value.begin(), line.value.end(), [&](double value) { range.add(value); });
    }
    drawing.text(left, top - 8, "bold", title);
    if (range.isEmpty()) return drawing.text(left, top + 20, "soft", "Nothing was recorded of it.");
    const double step = std::max(1.0, roundLength(std::max(range.length(), 4.0) / 4));
    const double low = std::floor(range.low / step) * step;
    const double high = std::max(low + step, std::ceil(range.high / step) * step);
    const auto yOf = [&](double value) { return top + stripHeight * (high - value) / (high - low); };

    if (flights.size() == 1) drawStandstill(drawing, flights.front(), top, seconds);
    drawTime(drawing, top, seconds);
    for (double tick = low; tick <= high; tick += step) {
        drawing.line(left, yOf(tick), right, yOf(tick), "grid");
        drawing.text(left - 6, yOf(tick) + 4, "soft end", decimal(tick, 0));
    }
    for (std::size_t place = 0; place < flights.size(); ++place) {
        for (const auto& line : flights[place].lines[key]) {
            const auto pointOf = [&](std::size_t i) {
                return std::pair{xOf(line.at[i], seconds), yOf(line.value[i])};
            };
            drawing.path(polyline(line.at.size(), line.breaks, pointOf), "line " + kindOf('i', place));
        }
    }
}

} // namespace

std::string plotPicture(const std::vector<PlotFlight>& flights) {
    Drawing drawing;
    double y = 24;
    for (std::size_t place = 0; place < flights.size(); ++place) {
        const auto& flight = flights[place];
        drawing.line(left, y - 4, left + 40, y - 4, "line " + kindOf('i', place));
        const auto lead = flights.size() > 1 ? letter(place) + "  " : std::string();
        drawing.text(left + 50, y, "", lead + flight.name + ", " + timeText(flight.seconds));
        y += 20;
    }
    TrackPanel(flights, y).draw(drawing);
    y += trackHeight + stripGap;
    const bool hasStandstill =
        flights.size() == 1 && !(flights.front().gaps.empty() && flights.front().frozen.empty());
    if (hasStandstill) {
        drawing.text(right, y - 8, "soft end", "grey: nothing recorded, or the simulator was paused");
    }
    drawStrip(drawing, flights, 0, "Altitude, indicated, ft", y);
    y += stripHeight + stripGap;
    drawStrip(drawing, flights, 1, "Height above ground, ft", y);
    return drawing.take(y + stripHeight + 30);
}

} // namespace tarnly::track
