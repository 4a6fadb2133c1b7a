#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

/// What pictures that stand still are made of: SVG 1.1. Plain values, coordinates in pixels.
namespace tarnly::track {

/// The picture, and the part of it in which is drawn.
namespace picture {
constexpr double width = 1000;
constexpr double left = 70;
constexpr double right = width - 40;
} // namespace picture

/// Without an exponent.
std::string decimal(double value, int digits);
std::string pixels(double value);

/// The parts of a drawing, one after the other. `kind` is one or more of the classes of its style.
class Drawing {
  public:
    void text(double x, double y, std::string_view kind, const std::string& content);
    void box(double x, double y, double width, double height, std::string_view kind);
    /// None where `path` is empty.
    void path(const std::string& path, const std::string& kind);
    void line(double x1, double y1, double x2, double y2, std::string_view kind);

    /// All of it, `height` high.
    std::string take(double height);

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

/// The kind `name` of a flight, by its place among all.
std::string kindOf(char name, std::size_t place);
/// The letter of a flight.
std::string letterOf(std::size_t place);

/// What values lie in.
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
double roundLength(double length);

} // namespace tarnly::track
