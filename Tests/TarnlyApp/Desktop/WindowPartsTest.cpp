#include "TarnlyApp/Desktop/WindowParts.hpp"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "TarnlyApp/Desktop/ColorScheme.hpp"

namespace tarnly {
namespace {

/// Relative luminance and contrast as WCAG 2.1 defines them.
double luminance(const QColor& colour) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

TEST(Labels, SecondaryTextIsReadableInLightAndDark) {
    for (const auto& palette : {QApplication::palette(), darkPalette()}) {
        const auto window = palette.color(QPalette::Window);
        EXPECT_GE(contrast(secondaryColour(palette), window), 4.5);
        EXPECT_LT(contrast(secondaryColour(palette), window),
                  contrast(palette.color(QPalette::WindowText), window));
    }
}

TEST(Labels, AnEmptyCheckBoxStandsOutInTheDark) {
    const auto window = darkPalette().color(QPalette::Window);
    EXPECT_GE(contrast(darkCheckBoxPalette().color(QPalette::Base), window), 3.0); // WCAG 2.1, 1.4.11
}

/// Qt tells widgets of a new palette only while the application runs.
void setPaletteWhileRunning(const QPalette& palette) {
    QTimer::singleShot(0, qApp, [&] {
        QApplication::setPalette(palette);
        QTimer::singleShot(0, qApp, [] { QApplication::exit(); });
    });
    QApplication::exec();
}

TEST(Labels, ACaptionFollowsTheColoursOfTheDesktop) {
    CaptionLabel caption("text");
    caption.show();
    const auto before = QApplication::palette();
    setPaletteWhileRunning(darkPalette());
    EXPECT_EQ(caption.palette().color(QPalette::WindowText), secondaryColour(darkPalette()));
    setPaletteWhileRunning(before);
    EXPECT_EQ(caption.palette().color(QPalette::WindowText), secondaryColour(before));
}

TEST(Labels, ACaptionIsPlainTextAndSmaller) {
    const CaptionLabel caption("<b>bold</b>");
    EXPECT_EQ(caption.textFormat(), Qt::PlainText);
    EXPECT_LT(caption.font().pointSizeF(), QApplication::font().pointSizeF());
    EXPECT_EQ(caption.accessibleName(), "<b>bold</b>");
}

TEST(Labels, ACaptionBreaksWithinALongWord) {
    CaptionLabel caption;
    caption.showText(QString(63, u'n'));
    EXPECT_LT(caption.minimumSizeHint().width(), 100);
    EXPECT_EQ(caption.accessibleName(), QString(63, u'n')) << "what is spoken is the word itself";
}

} // namespace
} // namespace tarnly
