#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLayout>
#include <QTest>
#include <algorithm>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/AddressesWindow.hpp"
#include "TarnlyApp/Desktop/ClientList.hpp"
#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/ReachWindow.hpp"
#include "TarnlyApp/Desktop/RunningCompanion.hpp"
#include "TarnlyApp/Desktop/SettingsWindow.hpp"
#include "TarnlyApp/Desktop/SpokenLanguage.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"

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
    const test::TemporaryFolder folder;
    const test::SpokenLanguage spoken{GetParam()};
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

TEST_P(LooksTest, ATestThatCannotBeDoesSoToo) {
    ReachWindow reach{model};
    reach.show();
    EXPECT_THAT(spoiltIn(reach), IsEmpty());
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

class ReachLooksTest : public test::RunningCompanionTest, public testing::WithParamInterface<const char*> {
  protected:
    const test::SpokenLanguage spoken{GetParam()};
};

TEST_P(ReachLooksTest, ATestShowsItsTextsInFull) {
    using namespace std::chrono_literals;
    start();
    if (model.addresses().empty()) GTEST_SKIP() << "this computer has no network";
    ReachWindow patient(model);
    patient.show();
    EXPECT_THAT(spoiltIn(patient), IsEmpty());
    ReachWindow brief(model, 1ms);
    brief.show();
    const auto never = inWords(ReachTest::neverArrived(model.activity()).text).toStdString();
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::ranges::count(test::textsFromTop(brief), never) > 0; },
                                test::patienceMilliseconds));
    EXPECT_THAT(spoiltIn(brief), IsEmpty());
}

std::string nameOf(const testing::TestParamInfo<const char*>& language) { return language.param; }

INSTANTIATE_TEST_SUITE_P(Languages, LooksTest, testing::Values("en", "de", "he"), nameOf);
INSTANTIATE_TEST_SUITE_P(Languages, ReachLooksTest, testing::Values("en", "de", "he"), nameOf);

} // namespace
} // namespace tarnly
