#include "TarnlyTrack/Plot/Drawing.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::track {
namespace {

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
    ".s0,.s4{color:#0b5cad}.s1,.s5{color:#a83c00}.s2,.s6{color:#00694a}.s3,.s7{color:#8b2f86}"
    ".would{fill:#f6f8fa;stroke:currentColor;stroke-width:2}.miss{fill:none;stroke:currentColor;stroke-width:"
    "2.5}"
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

} // namespace

std::string decimal(double value, int digits) {
    std::array<char, 64> text{};
    const int size = std::snprintf(text.data(), text.size(), "%.*f", digits, value);
    return {text.data(), static_cast<std::size_t>(std::max(size, 0))};
}

std::string pixels(double value) { return decimal(value, 1); }

void Drawing::text(double x, double y, std::string_view kind, const std::string& content) {
    out_ += "<text x=\"" + pixels(x) + "\" y=\"" + pixels(y) + "\" class=\"" + std::string(kind) + "\">" +
            escaped(content) + "</text>\n";
}

void Drawing::box(double x, double y, double width, double height, std::string_view kind) {
    out_ += "<rect x=\"" + pixels(x) + "\" y=\"" + pixels(y) + "\" width=\"" + pixels(width) +
            "\" height=\"" + pixels(height) + "\" class=\"" + std::string(kind) + "\"/>\n";
}

void Drawing::path(const std::string& path, const std::string& kind) {
    if (path.empty()) return;
    out_ += "<path class=\"" + kind + "\" d=\"" + path + "\"/>\n";
}

void Drawing::line(double x1, double y1, double x2, double y2, std::string_view kind) {
    path("M" + pixels(x1) + " " + pixels(y1) + "L" + pixels(x2) + " " + pixels(y2), std::string(kind));
}

std::string Drawing::take(double height) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "viewBox=\"0 0 " +
           pixels(picture::width) + " " + pixels(height) + "\" width=\"" + pixels(picture::width) +
           "\" height=\"" + pixels(height) + "\" role=\"img\">\n<title>Recorded flights</title>\n<style>" +
           std::string(style) + "</style>\n<rect width=\"" + pixels(picture::width) + "\" height=\"" +
           pixels(height) + "\" fill=\"#ffffff\"/>\n" + out_ + "</svg>\n";
}

std::string kindOf(char name, std::size_t place) { return name + std::to_string(place % 8); }

std::string letterOf(std::size_t place) { return {static_cast<char>('A' + static_cast<char>(place))}; }

double roundLength(double length) {
    const double power = std::pow(10, std::floor(std::log10(length)));
    for (const double digit : {5.0, 2.0}) {
        if (digit * power <= length) return digit * power;
    }
    return power;
}

} // namespace tarnly::track
