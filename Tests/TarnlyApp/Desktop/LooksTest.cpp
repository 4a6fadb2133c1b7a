#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLayout>
#include <optional>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/AddressesWindow.hpp"
#include "TarnlyApp/Desktop/ClientList.hpp"
#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/SettingsWindow.hpp"
#include "TarnlyApp/Desktop/Translations.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"

namespace tarnly {
namespace {

using testing::IsEmpty;

std::string described(const QWidget& widget, const char* what) {
    const auto* label = qobject_cast<const QLabel*>(&widget);
    const auto* button = qobject_cast<const QAbstractButton*>(&widget);
    const auto text = label != nullptr ? label->text() : button != nullptr ? button->text() : QString();
    return std::string(what) + ": " + widget.metaObject()->className() + " \"" + text.toStdString() + "\"";
}

/// Whether all that the text takes is shown.
bool hasRoom(const QWidget& widget) {
    const auto size = widget.size();
    const auto* label = qobject_cast<const QLabel*>(&widget);
    if (label != nullptr && label->wordWrap()) return label->heightForWidth(size.width()) <= size.height();
    if (qobject_cast<const QGroupBox*>(&widget) != nullptr)
        return widget.minimumSizeHint().width() <= size.width();
    const auto wanted = widget.sizeHint();
    return wanted.width() <= size.width() && wanted.height() <= size.height();
}

bool hasText(const QWidget& widget) {
    return qobject_cast<const QLabel*>(&widget) != nullptr ||
           qobject_cast<const QAbstractButton*>(&widget) != nullptr ||
           qobject_cast<const QGroupBox*>(&widget) != nullptr;
}

/// What of a window's texts is cut off, sticks out of what it stands in, or lies upon another one.
std::vector<std::string> spoiltIn(const QWidget& window) {
    std::vector<std::string> spoilt;
    std::vector<const QWidget*> shown;
    for (const auto* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(&window) || !hasText(*widget)) continue;
        if (!hasRoom(*widget)) spoilt.push_back(described(*widget, "cut off"));
        if (!widget->parentWidget()->rect().contains(widget->geometry()))
            spoilt.push_back(described(*widget, "sticks out"));
        for (const auto* other : shown) {
            if (other->parentWidget() == widget->parentWidget() &&
                other->geometry().intersects(widget->geometry()))
                spoilt.push_back(described(*widget, "lies upon another"));
        }
        shown.push_back(widget);
    }
    return spoilt;
}

/// In a language; of the enlarged ones Qt is told by the environment, see the list of tests.
class LooksTest : public testing::TestWithParam<const char*> {
  protected:
    LooksTest() {
        qputenv("TARNLY_TRANSLATIONS", TARNLY_TEST_TRANSLATIONS);
        translations.emplace(QStringList{GetParam()});
        QCoreApplication::processEvents();
    }
    ~LooksTest() override { qunsetenv("TARNLY_TRANSLATIONS"); }

    const test::TemporaryFolder folder;
    std::optional<Translations> translations;
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, {}};
    RuntimeModel model{runtime};
};

TEST_P(LooksTest, APanelShowsItsTextsInFull) {
    Panel panel{model};
    panel.show();
    EXPECT_THAT(spoiltIn(panel), IsEmpty());
}

TEST_P(LooksTest, SettingsShowTheirTextsInFull) {
    SettingsWindow settings{store};
    settings.show();
    EXPECT_THAT(spoiltIn(settings), IsEmpty());
}

TEST_P(LooksTest, SettingsThatTheCommandLineOverrulesDoToo) {
    CompanionOptions options;
    options.name = "Left rig";
    options.port = 41234;
    options.simulatorHost = "192.0.2.7";
    options.situationsFolder = "/home/pilot/X-Plane 12/Output/situations";
    options.advertises = false;
    options.allowedOrigins.push_back(*WebOrigin::parse("https://example.com"));
    SettingsWindow settings{store, options};
    settings.show();
    EXPECT_THAT(spoiltIn(settings), IsEmpty());
}

TEST_P(LooksTest, AddressesShowTheirTextsInFull) {
    AddressesWindow addresses{model};
    addresses.show();
    EXPECT_THAT(spoiltIn(addresses), IsEmpty());
}

TEST_P(LooksTest, ConnectedClientsAreShownInFull) {
    ClientList list;
    list.setFixedWidth(290);
    list.showClients(
        {9, 9, std::vector<ClientStatus>(9, {1, "2001:db8:1:2::", "2026-11-21T15:04:05Z", 1234})});
    list.show();
    list.setFixedHeight(list.layout()->heightForWidth(290));
    EXPECT_THAT(spoiltIn(list), IsEmpty());
}

TEST_P(LooksTest, WhatIsCutOffIsSeen) {
    QWidget window;
    QCheckBox box("A text that is longer than its place", &window);
    box.setGeometry(0, 0, 40, 20);
    CaptionLabel caption("A caption that takes more lines than it has");
    caption.setParent(&window);
    caption.setGeometry(0, 10, 60, 10);
    window.resize(100, 15);
    window.show();
    EXPECT_THAT(spoiltIn(window), testing::SizeIs(5))
        << "both are cut off and stick out, or lie upon another";
}

INSTANTIATE_TEST_SUITE_P(Languages, LooksTest, testing::Values("en", "de", "he"),
                         [](const auto& language) { return std::string(language.param); });

} // namespace
} // namespace tarnly
