#include "TarnlyApp/Desktop/AttentionIcon.hpp"

#include <gtest/gtest.h>

#include <QImage>
#include <QPixmap>

namespace tarnly {
namespace {

using Kind = SimulatorStage::Kind;

CompanionStatus statusWith(Kind kind) {
    CompanionStatus status;
    status.stage = StageStatus::of({kind, "", {}}, Clock::TimePoint());
    return status;
}

QIcon iconOf(const QColor& colour) {
    QIcon icon;
    for (const int size : {16, 22, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(colour);
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// How much brighter or darker than its neighbours: 0 to 255.
int grey(const QImage& image, double x, double y) {
    const auto pixel = image.pixelColor(int(x * image.width()), int(y * image.height()));
    return qGray(pixel.rgb()) * pixel.alpha() / 255;
}

TEST(Attention, IsNeededUnlessAFlightIsLoaded) {
    EXPECT_FALSE(needsAttention({}));
    EXPECT_FALSE(needsAttention(statusWith(Kind::flightLoaded)));
    for (const auto kind : {Kind::notRunning, Kind::refusing, Kind::tooOld, Kind::mainMenu, Kind::silent}) {
        EXPECT_TRUE(needsAttention(statusWith(kind)));
    }
}

TEST(Attention, TheToolTipHasTheWordsAndTheAdvice) {
    EXPECT_EQ(toolTipOf({}), "Tarnly");
    EXPECT_EQ(toolTipOf(statusWith(Kind::flightLoaded)), "Tarnly\nSimulator: flight loaded.");
    EXPECT_EQ(toolTipOf(statusWith(Kind::mainMenu)), "Tarnly\nSimulator: at the main menu. Load a flight.");
}

TEST(AttentionMark, IsInEverySizeAndLeavesTheRestOfTheIcon) {
    const auto marked = withAttentionMark(iconOf(Qt::blue));
    EXPECT_EQ(marked.availableSizes(), iconOf(Qt::blue).availableSizes());
    for (const auto& size : marked.availableSizes()) {
        const auto image = marked.pixmap(size, 1.0).toImage();
        EXPECT_EQ(image.size(), size);
        EXPECT_EQ(image.pixelColor(1, 1), QColor(Qt::blue));
        EXPECT_NE(image, iconOf(Qt::blue).pixmap(size, 1.0).toImage());
    }
}

TEST(AttentionMark, IsToldWithoutColours) {
    for (const auto& colour : {QColor(Qt::black), QColor(Qt::white), QColor(Qt::gray)}) {
        const auto image = withAttentionMark(iconOf(colour)).pixmap(QSize(64, 64), 1.0).toImage();
        const int disc = grey(image, 0.52, 0.7);
        EXPECT_GT(disc, 150) << "bright disc";
        EXPECT_LT(grey(image, 0.7, 0.6), disc - 100) << "dark stroke in it";
        EXPECT_LT(grey(image, 0.7, 0.38), 40) << "gap around it";
    }
}

} // namespace
} // namespace tarnly
