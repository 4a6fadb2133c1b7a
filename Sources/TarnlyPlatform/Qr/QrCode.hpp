#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnly {

/// A text as a square of dark and light modules that a camera reads. A plain value, for any thread.
class QrCode {
  public:
    /// In modules, on each side: ISO/IEC 18004 asks for four.
    static constexpr int quietZone = 4;

    /// `text` byte by byte, with about a seventh of the code repairable (error correction level M). Absent
    /// for an empty text and for one that does not fit.
    static std::optional<QrCode> of(const std::string& text);

    /// The modules along an edge, without the quiet zone that it needs on each side.
    int size() const { return size_; }

    /// The module in column `x` and row `y`, from the upper left; light outside of the code.
    bool isDark(int x, int y) const;

  private:
    QrCode(int size, std::vector<bool> modules) : size_(size), modules_(std::move(modules)) {}

    int size_;
    /// Row by row.
    std::vector<bool> modules_;
};

/// The code with its quiet zone for a terminal, two rows of modules a line, black on white whatever the
/// terminal's colours are (ECMA-48): many readers know no other.
std::vector<std::string> terminalLines(const QrCode& code);

} // namespace tarnly
