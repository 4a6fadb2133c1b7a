#include "TarnlyApp/Desktop/ReadableColours.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QListWidget>
#include <QTest>
#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/AddressesWindow.hpp"
#include "TarnlyApp/Desktop/ColorScheme.hpp"
#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/ReachWindow.hpp"
#include "TarnlyApp/Desktop/SettingsWindow.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

using testing::IsEmpty;

constexpr std::array groups{QPalette::Active, QPalette::Inactive, QPalette::Disabled};
constexpr std::array<std::pair<QPalette::ColorRole, QPalette::ColorRole>, 8> textsOnSurfaces{{
    {QPalette::WindowText, QPalette::Window},
    {QPalette::Text, QPalette::Base},
    {QPalette::ButtonText, QPalette::Button},
    {QPalette::PlaceholderText, QPalette::Base},
    {QPalette::HighlightedText, QPalette::Highlight},
    {QPalette::Link, QPalette::Window},
    {QPalette::LinkVisited, QPalette::Window},
    {QPalette::ToolTipText, QPalette::ToolTipBase},
}};

/// As it is seen on a surface through which it may shine.
QColor seenOn(const QColor& surface, const QColor& colour) {
    const auto share = colour.alphaF();
    const auto part = [share](float below, float above) { return below * (1 - share) + above * share; };
    return QColor::fromRgbF(part(surface.redF(), colour.redF()), part(surface.greenF(), colour.greenF()),
                            part(surface.blueF(), colour.blueF()));
}

std::vector<std::string> unreadable(const QPalette& palette) {
    std::vector<std::string> found;
    for (const auto group : groups) {
        for (const auto& [text, surface] : textsOnSurfaces) {
            const auto behind = palette.color(group, surface);
            const auto ratio = contrast(seenOn(behind, palette.color(group, text)), behind);
            if (ratio < 4.5)
                found.push_back("role " + std::to_string(text) + " of group " + std::to_string(group) + ": " +
                                std::to_string(ratio));
        }
    }
    return found;
}

QPalette corrected(const QPalette& palette) { return readableCorrections(palette).resolve(palette); }

/// A desktop that takes looks for more than words.
QPalette faintPalette(const QColor& surface, const QColor& faint) {
    QPalette palette(faint, surface, surface, surface, surface, faint, faint, surface, surface);
    palette.setColor(QPalette::Highlight, faint);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(faint.red(), faint.green(), faint.blue(), 60));
    return palette;
}

TEST(Contrast, IsThatOfTheGuidelines) {
    EXPECT_DOUBLE_EQ(contrast(Qt::black, Qt::white), 21);
    EXPECT_DOUBLE_EQ(contrast(Qt::white, Qt::black), 21);
    EXPECT_DOUBLE_EQ(contrast(Qt::red, Qt::red), 1);
    // The greys at the border of what is readable on white, and the pure colours.
    EXPECT_NEAR(contrast(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.005);
    EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005);
    EXPECT_NEAR(contrast(Qt::red, Qt::white), 4.00, 0.005);
    EXPECT_NEAR(contrast(Qt::blue, Qt::white), 8.59, 0.005);
}

TEST(ReadableColours, LeavesWhatIsReadable) {
    EXPECT_EQ(readableOn(Qt::white, Qt::blue), QColor(Qt::blue));
    const QColor veil(0, 0, 0, 200);
    EXPECT_EQ(readableOn(Qt::white, veil), veil);
}

TEST(ReadableColours, TheDarkPaletteIsReadableAsItIs) { EXPECT_THAT(unreadable(darkPalette()), IsEmpty()); }

TEST(ReadableColours, MakesEachPaletteReadable) {
    EXPECT_FALSE(unreadable(QApplication::palette()).empty()) << "or the corrections show nothing here";
    EXPECT_THAT(unreadable(corrected(QApplication::palette())), IsEmpty());
    for (const int surface : {0x00, 0x20, 0x50, 0x76, 0x80, 0xb0, 0xff}) {
        for (const int faint : {0x10, 0x60, 0x90, 0xc0}) {
            const auto palette =
                faintPalette(QColor(surface, surface, surface), QColor(faint, faint / 2, 255 - faint));
            EXPECT_THAT(unreadable(corrected(palette)), IsEmpty()) << surface << " " << faint;
        }
    }
}

TEST(ReadableColours, ASelectedRowIsReadableBelowTheKeyboardsFocus) {
    for (const auto& palette : {QApplication::palette(), darkPalette()}) {
        auto desktops = corrected(palette);
        desktops.setResolveMask(~QPalette::ResolveMask{0}); // in all roles
        QListWidget list;
        list.setPalette(desktops);
        list.addItem(QString(5, QChar(0x2588))); // full blocks, without smoothed edges
        list.setCurrentRow(0);
        list.setAttribute(Qt::WA_KeyboardFocusChange);
        list.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&list));
        list.setFocus(Qt::TabFocusReason);
        const auto row = list.viewport()->grab(list.visualItemRect(list.item(0))).toImage();
        std::vector<QColor> colours;
        for (int x = 4; x < row.width() - 4; ++x)
            colours.push_back(row.pixelColor(x, row.height() / 2));
        const auto luminance = [](const QColor& colour) { return contrast(colour, Qt::black); };
        const auto [darkest, lightest] = std::ranges::minmax_element(colours, {}, luminance);
        EXPECT_GE(contrast(*darkest, *lightest), readableContrast)
            << lightest->name().toStdString() << " on " << darkest->name().toStdString() << ", of "
            << list.palette().color(QPalette::Highlight).name().toStdString();
    }
}

TEST(ReadableColours, CorrectsNothingElse) {
    const auto before = QApplication::palette();
    const auto after = corrected(before);
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button, QPalette::WindowText})
            EXPECT_EQ(after.color(group, role), before.color(group, role));
    }
}

TEST(ReadableColours, HoldInEachWidgetOfEachWindowWhateverTheDesktopTurnsTo) {
    const test::TemporaryFolder folder;
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, {}};
    RuntimeModel model{runtime};
    Panel panel{model};
    AddressesWindow addresses{model};
    ReachWindow reach{model};
    SettingsWindow settings{store};
    const std::array<QWidget*, 4> windows{&panel, &addresses, &reach, &settings};
    for (auto* window : windows)
        window->show();
    const auto before = QApplication::palette();
    for (const auto& palette : {before, darkPalette(), faintPalette(Qt::white, QColor(150, 160, 170)),
                                faintPalette(QColor(40, 40, 40), QColor(90, 80, 70)), before}) {
        test::setPaletteWhileRunning(palette);
        for (const auto* window : windows) {
            EXPECT_THAT(unreadable(window->palette()), IsEmpty()) << window->windowTitle().toStdString();
            for (const auto* widget : window->findChildren<QWidget*>())
                EXPECT_THAT(unreadable(widget->palette()), IsEmpty())
                    << widget->metaObject()->className() << " in " << window->windowTitle().toStdString();
        }
    }
}

} // namespace
} // namespace tarnly
