#include "TarnlyApp/Desktop/TrayMark.hpp"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <functional>

#include "TarnlyApp/Desktop/AttentionIcon.hpp"

namespace tarnly {
namespace {

QImage imageOf(const QIcon& icon, int size) { return icon.pixmap(QSize(size, size), 1.0).toImage(); }

/// As the coloured icon of the application has it: something that fills its square.
QIcon fullIcon() {
    QIcon icon;
    for (const int size : {16, 22, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent); // it can be seen through
        QPainter(&pixmap).fillRect(pixmap.rect(), Qt::blue);
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// Which share of the dots is there in one and not in the other, whatever their colours.
double outlineDifference(const QImage& one, const QImage& other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            if ((one.pixelColor(x, y).alpha() > 127) != (other.pixelColor(x, y).alpha() > 127)) ++count;
    }
    return static_cast<double>(count) / (one.width() * one.height());
}

void expectThreeOutlines(const std::function<QIcon(TrayLook)>& iconOf) {
    for (const int size : {16, 22, 64}) {
        const auto calm = imageOf(iconOf(TrayLook::calm), size);
        const auto recording = imageOf(iconOf(TrayLook::recording), size);
        const auto trouble = imageOf(iconOf(TrayLook::trouble), size);
        EXPECT_GT(outlineDifference(calm, recording), 0.04) << size;
        EXPECT_GT(outlineDifference(calm, trouble), 0.04) << size;
        EXPECT_GT(outlineDifference(recording, trouble), 0.04) << size;
    }
}

TEST(TrayMark, IsToldByTheOutlineAlone) {
    expectThreeOutlines([icon = fullIcon()](TrayLook look) { return withLook(icon, look); });
}

TEST(SymbolicIcon, TellsTheThreeByTheirOutlines) {
    expectThreeOutlines([](TrayLook look) { return symbolicIcon(look, Qt::white); });
}

TEST(SymbolicIcon, HasOneColourOnly) {
    for (const auto& colour : {QColor(Qt::white), QColor(0x2e, 0x34, 0x36)}) {
        for (const auto look : {TrayLook::calm, TrayLook::recording, TrayLook::trouble}) {
            const auto image = imageOf(symbolicIcon(look, colour), 64);
            int painted = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const auto dot = image.pixelColor(x, y);
                    if (dot.alpha() < 255) continue; // at the edges
                    ++painted;
                    EXPECT_EQ(dot, colour);
                }
            }
            EXPECT_GT(painted, 64 * 64 / 8);
        }
    }
}

} // namespace
} // namespace tarnly
