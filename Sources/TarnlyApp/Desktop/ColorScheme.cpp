#include "TarnlyApp/Desktop/ColorScheme.hpp"

#include <QApplication>

namespace tarnly {
namespace {

bool isLight(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() > palette.color(QPalette::WindowText).lightness();
}

} // namespace

QPalette darkPalette() {
    const QColor window(0x2a, 0x2a, 0x2e);
    const QColor text(0xee, 0xee, 0xec);
    const QColor faintText(0xb0, 0xb0, 0xb4);
    QPalette palette(text, QColor(0x3c, 0x3c, 0x42), QColor(0x5a, 0x5a, 0x60), QColor(0x1c, 0x1c, 0x1e),
                     QColor(0x4a, 0x4a, 0x50), text, Qt::white, QColor(0x1e, 0x1e, 0x20), window);
    palette.setColor(QPalette::Highlight, QColor(0x20, 0x60, 0xb0));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x78, 0xae, 0xed));
    palette.setColor(QPalette::LinkVisited, QColor(0xc8, 0xa2, 0xe8));
    palette.setColor(QPalette::PlaceholderText, faintText);
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, faintText);
    }
    return palette;
}

QPalette darkCheckBoxPalette() {
    QPalette palette = darkPalette();
    palette.setColor(QPalette::Base, QColor(0x7c, 0x7c, 0x82));
    return palette;
}

ColorScheme::ColorScheme() : watch_(watchWishForDark([this](bool isDark) { adopt(isDark); })) {}

// A desktop whose colours Qt knows has made the palette dark already.
void ColorScheme::adopt(bool isDark) {
    thread_.check();
    if (isDark == isOurs_ || (isDark && !isLight(QApplication::palette()))) return;
    isOurs_ = isDark;
    QApplication::setPalette(isDark ? darkPalette() : QPalette()); // an empty one is the desktop's
    QApplication::setPalette(isDark ? darkCheckBoxPalette() : QPalette(), "QCheckBox");
}

} // namespace tarnly
