#include "TarnlyPlatform/Base/NumberText.hpp"

#include <array>
#include <charconv>
#include <cmath>

namespace tarnly {
namespace {

template <typename Number>
void appendShortest(std::string& out, Number value) {
    std::array<char, 32> digits; // the longest double, -2.2250738585072014e-308, has 24 characters
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(digits.data(), end);
}

template <typename Real>
void appendReal(std::string& out, Real value) {
    constexpr Real limit{
        static_cast<Real>(1e16)}; // of singles, the next one above: those below it are the same
    const bool isSmall = value < limit && value > -limit;
    const auto whole = isSmall ? static_cast<std::int64_t>(value) : 0;
    const bool isWhole = isSmall && static_cast<Real>(whole) == value;
    if (isWhole && !(whole == 0 && std::signbit(value))) {
        appendShortest(out, whole);
    } else {
        appendShortest(out, value);
    }
}

} // namespace

void appendNumber(std::string& out, double value) { appendReal(out, value); }
void appendNumber(std::string& out, float value) { appendReal(out, value); }
void appendNumber(std::string& out, std::int64_t value) { appendShortest(out, value); }

} // namespace tarnly
