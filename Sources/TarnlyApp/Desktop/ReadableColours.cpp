#include "TarnlyApp/Desktop/ReadableColours.hpp"

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <algorithm>
#include <cmath>

namespace tarnly {
namespace {

/// How far a colour goes at once, as a share of the way.
constexpr float step = 0.04F;

struct Text {
    QPalette::ColorRole text;
    QPalette::ColorRole surface;
    double contrast = readableContrast;
};

/// The style paints the keyboard's focus over a selected row, text and all, which takes about a fifth.
constexpr double selectedContrast = 5.8;

constexpr Text texts[] = {
    {QPalette::WindowText, QPalette::Window},
    {QPalette::Text, QPalette::Base},
    {QPalette::ButtonText, QPalette::Button},
    {QPalette::PlaceholderText, QPalette::Base},
    {QPalette::Link, QPalette::Window},
    {QPalette::LinkVisited, QPalette::Window},
    {QPalette::ToolTipText, QPalette::ToolTipBase},
    {QPalette::Highlight, QPalette::HighlightedText, selectedContrast}, // of these the text stays as it is
};

double linear(double part) { return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); }

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

QColor mixed(const QColor& one, const QColor& other, float share) {
    const auto between = [share](float from, float to) { return from + (to - from) * share; };
    return QColor::fromRgbF(between(one.redF(), other.redF()), between(one.greenF(), other.greenF()),
                            between(one.blueF(), other.blueF()));
}

} // namespace

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor readableOn(const QColor& surface, const QColor& colour, double wanted) {
    const auto seen = mixed(surface, colour, colour.alphaF());
    if (contrast(seen, surface) >= wanted) return colour;
    const bool isBlackBetter = contrast(Qt::black, surface) > contrast(Qt::white, surface);
    const QColor end = isBlackBetter ? Qt::black : Qt::white;
    for (float share = step; share < 1; share += step) {
        const auto candidate = QColor(mixed(seen, end, share).rgb()); // as the screen has it
        if (contrast(candidate, surface) >= wanted) return candidate;
    }
    return end;
}

QPalette readableCorrections(const QPalette& palette) {
    QPalette corrections;
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        for (const auto& pair : texts) {
            const auto present = palette.color(group, pair.text);
            const auto readable = readableOn(palette.color(group, pair.surface), present, pair.contrast);
            if (readable != present) corrections.setColor(group, pair.text, readable);
        }
    }
    return corrections;
}

ReadableColours::ReadableColours(QWidget& window) : QObject(&window), window_(window) {
    qApp->installEventFilter(this);
    adopt();
}

bool ReadableColours::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) adopt();
    return QObject::eventFilter(watched, event);
}

void ReadableColours::adopt() { window_.setPalette(readableCorrections(QApplication::palette())); }

} // namespace tarnly
