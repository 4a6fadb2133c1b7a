#include "TarnlyPlatform/Qr/QrCode.hpp"

#include <qrencode.h>

#include <limits>
#include <memory>

namespace tarnly {
namespace {

using Encoded = std::unique_ptr<QRcode, decltype(&QRcode_free)>;

Encoded encode(const std::string& text) {
    if (text.empty() || text.size() > std::numeric_limits<int>::max()) return {nullptr, &QRcode_free};
    constexpr int smallestThatFits = 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    return {QRcode_encodeData(static_cast<int>(text.size()), bytes, smallestThatFits, QR_ECLEVEL_M),
            &QRcode_free};
}

constexpr auto blackOnWhite = "\x1b[30;107m";
constexpr auto usualColours = "\x1b[0m";

/// Two modules, one above the other.
const char* halves(bool isUpperDark, bool isLowerDark) {
    if (isUpperDark) return isLowerDark ? "█" : "▀";
    return isLowerDark ? "▄" : " ";
}

} // namespace

std::optional<QrCode> QrCode::of(const std::string& text) {
    const auto code = encode(text);
    if (!code) return std::nullopt;
    const auto count = static_cast<std::size_t>(code->width) * static_cast<std::size_t>(code->width);
    std::vector<bool> modules(count);
    // The lowest bit of a module is its colour, the others are the encoder's own.
    for (std::size_t i = 0; i < count; ++i)
        modules[i] = (code->data[i] & 1U) != 0;
    return QrCode(code->width, std::move(modules));
}

bool QrCode::isDark(int x, int y) const {
    if (x < 0 || y < 0 || x >= size_ || y >= size_) return false;
    return modules_[static_cast<std::size_t>(y) * static_cast<std::size_t>(size_) +
                    static_cast<std::size_t>(x)];
}

std::vector<std::string> terminalLines(const QrCode& code) {
    const int begin = -QrCode::quietZone;
    const int end = code.size() + QrCode::quietZone;
    std::vector<std::string> lines;
    for (int y = begin; y < end; y += 2) {
        std::string line = blackOnWhite;
        for (int x = begin; x < end; ++x)
            line += halves(code.isDark(x, y), code.isDark(x, y + 1));
        lines.push_back(line + usualColours);
    }
    return lines;
}

} // namespace tarnly
