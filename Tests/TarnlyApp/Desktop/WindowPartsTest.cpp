#include "TarnlyApp/Desktop/WindowParts.hpp"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>
#include <QRegion>
#include <QScrollBar>
#include <QTextLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "TarnlyApp/Desktop/ColorScheme.hpp"
#include "TarnlyApp/Desktop/ScrollingPart.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

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

/// Where something is painted.
QRect inkOf(QWidget& widget) {
    const auto image = widget.grab().toImage();
    const auto background = image.pixel(0, image.height() - 1);
    QRegion ink;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) != background) ink += QRect(x, y, 1, 1);
    return ink.boundingRect();
}

TEST(Labels, ATextBeginsWhereTheLanguageBeginsIt) {
    HeadlineLabel headline("ab");
    CaptionLabel caption("ab");
    for (QLabel* label : std::initializer_list<QLabel*>{&headline, &caption}) {
        label->resize(200, 40);
        EXPECT_LT(inkOf(*label).right(), 100);
        label->setLayoutDirection(Qt::RightToLeft);
        EXPECT_GT(inkOf(*label).left(), 100) << "also a name in Latin letters";
    }
}

TEST(Labels, NoAccentOfACaptionIsCutOff) {
    CaptionLabel caption("\u00D6"); // O with two dots
    caption.adjustSize();
    QLabel roomy("\u00D6");
    roomy.setFont(caption.font());
    roomy.resize(60, 60);
    EXPECT_EQ(inkOf(caption).height(), inkOf(roomy).height());
}

TEST(ScrollingPart, TheBarTouchesNoContentOnEitherSide) {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        auto* content = new QWidget;
        auto* tall = new QWidget;
        tall->setMinimumHeight(500);
        (new QVBoxLayout(content))->addWidget(tall);
        ScrollingPart part(content, "content");
        part.setLayoutDirection(direction);
        part.resize(200, 100);
        part.show();
        const auto* bar = part.verticalScrollBar();
        const QRect place(bar->mapTo(&part, QPoint()), bar->size());
        EXPECT_FALSE(place.adjusted(-3, 0, 3, 0).intersects(part.viewport()->geometry())) << direction;
    }
}

TEST(Labels, ACaptionFollowsTheColoursOfTheDesktop) {
    CaptionLabel caption("text");
    caption.show();
    const auto before = QApplication::palette();
    test::setPaletteWhileRunning(darkPalette());
    EXPECT_EQ(caption.palette().color(QPalette::WindowText), secondaryColour(darkPalette()));
    test::setPaletteWhileRunning(before);
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

/// Which way the lines of all windows run, for one test.
class LineDirection {
  public:
    explicit LineDirection(Qt::LayoutDirection direction) { QGuiApplication::setLayoutDirection(direction); }
    ~LineDirection() { QGuiApplication::setLayoutDirection(before_); }
    LineDirection(const LineDirection&) = delete;
    LineDirection& operator=(const LineDirection&) = delete;

  private:
    const Qt::LayoutDirection before_ = QGuiApplication::layoutDirection();
};

TEST(ShownAddress, ItsLastSlashComesLastInEveryLanguage) {
    const LineDirection direction(Qt::RightToLeft);
    const auto address = shownAddress("http://192.168.1.20:41234/");
    QTextLayout layout(address);
    QTextOption option;
    option.setTextDirection(Qt::RightToLeft);
    layout.setTextOption(option);
    layout.beginLayout();
    const auto line = layout.createLine();
    layout.endLayout();
    const auto last = static_cast<int>(address.lastIndexOf('/'));
    EXPECT_GT(line.cursorToX(last), line.cursorToX(last - 1)) << address.toStdString();
}

TEST(ShownAddress, IsTheAddressItselfElsewhere) {
    const LineDirection direction(Qt::LeftToRight);
    EXPECT_EQ(shownAddress("http://192.168.1.20:41234/"), "http://192.168.1.20:41234/");
}

} // namespace
} // namespace tarnly
