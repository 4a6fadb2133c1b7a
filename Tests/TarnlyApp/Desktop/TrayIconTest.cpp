#include "TarnlyApp/Desktop/TrayIcon.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

constexpr QSize panel(280, 200);

/// A screen with a bar of 30 at one of its edges.
constexpr QRect belowABar(0, 30, 1920, 1050);
constexpr QRect aboveABar(0, 0, 1920, 1050);
constexpr QRect besideABar(30, 0, 1890, 1080);

TEST(PanelPlacement, StandsBelowAnIconAtTheTop) {
    EXPECT_EQ(placeBeside(QRect(1000, 4, 22, 22), panel, belowABar), QPoint(870, 30));
}

TEST(PanelPlacement, StandsAboveAnIconAtTheBottom) {
    EXPECT_EQ(placeBeside(QRect(1000, 1054, 22, 22), panel, aboveABar), QPoint(870, 850));
}

TEST(PanelPlacement, StaysOnTheScreenInTheCorners) {
    EXPECT_EQ(placeBeside(QRect(1894, 4, 22, 22), panel, belowABar), QPoint(1640, 30));
    EXPECT_EQ(placeBeside(QRect(4, 1054, 22, 22), panel, aboveABar), QPoint(0, 850));
}

TEST(PanelPlacement, StandsBesideABarAtTheSide) {
    EXPECT_EQ(placeBeside(QRect(4, 1000, 22, 22), panel, besideABar).x(), 30);
    EXPECT_EQ(placeBeside(QRect(4, 4, 22, 22), panel, besideABar), QPoint(30, 26));
}

TEST(PanelPlacement, IsThatOfTheIconsScreen) {
    const QRect second(1920, 0, 1280, 1024);
    EXPECT_EQ(placeBeside(QRect(1930, 1000, 22, 22), panel, second), QPoint(1920, 800));
}

TEST(PanelPlacement, APanelLargerThanTheScreenShowsItsBeginning) {
    EXPECT_EQ(placeBeside(QRect(50, 2, 8, 8), QSize(280, 200), QRect(0, 10, 100, 90)), QPoint(0, 10));
}

} // namespace
} // namespace tarnly
