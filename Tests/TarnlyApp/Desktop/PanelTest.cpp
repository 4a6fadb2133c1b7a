#include "TarnlyApp/Desktop/Panel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QGroupBox>
#include <QKeyEvent>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

class PanelTest : public testing::Test {
  protected:
    static QPushButton* buttonIn(const Panel& panel, const char* text) {
        for (auto* found : panel.findChildren<QPushButton*>()) {
            if (found->text() == QString::fromUtf8(text)) return found;
        }
        return nullptr;
    }
    QPushButton* button(const char* text) { return buttonIn(panel, text); }
    void press(Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&panel, &event);
    }

    const test::TemporaryFolder folder;
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, {}};
    RuntimeModel model{runtime};
    Panel panel{model};
};

TEST_F(PanelTest, HasItsTextsInTheirOrder) {
    panel.show();
    EXPECT_EQ(panel.width(), 360);
    EXPECT_EQ(panel.layout()->contentsMargins(), QMargins(12, 12, 12, 12));
    EXPECT_EQ(panel.windowTitle(), "Tarnly");
    EXPECT_THAT(test::textsFromTop(panel),
                ElementsAre("Tarnly", "Starting…", "Addresses…", "Test from a phone…", "Not known yet.",
                            "No client is paired.", "No recording is running.", "Settings…", "Quit Tarnly"));
}

TEST_F(PanelTest, AnswersFourQuestions) {
    QStringList questions;
    for (const auto* group : panel.findChildren<QGroupBox*>())
        questions += group->title();
    EXPECT_EQ(questions, QStringList({"Can clients find it?", "Is the simulator there?", "Who is connected?",
                                      "Is it recording?"}));
}

TEST_F(PanelTest, ItsButtonsAskForWhatTheySay) {
    QSignalSpy addresses(&panel, &Panel::addressesRequested);
    QSignalSpy reachTest(&panel, &Panel::reachTestRequested);
    QSignalSpy settings(&panel, &Panel::settingsRequested);
    QSignalSpy quit(&panel, &Panel::quitRequested);
    button("Addresses…")->click();
    EXPECT_EQ(addresses.count(), 1);
    button("Test from a phone…")->click();
    EXPECT_EQ(reachTest.count(), 1);
    button("Settings…")->click();
    EXPECT_EQ(settings.count(), 1);
    button("Quit Tarnly")->click();
    EXPECT_EQ(quit.count(), 1);
}

TEST_F(PanelTest, HasTheUsualShortcuts) {
    EXPECT_EQ(button("Settings…")->shortcut(), QKeySequence("Ctrl+,"));
    EXPECT_EQ(button("Quit Tarnly")->shortcut(), QKeySequence("Ctrl+Q"));
}

TEST_F(PanelTest, ReturnPressesTheButtonWithTheFocus) {
    QSignalSpy settings(&panel, &Panel::settingsRequested);
    panel.show();
    button("Settings…")->setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(settings.count(), 1);
}

TEST_F(PanelTest, AScreenReaderIsToldWhatThePanelSays) {
    panel.show();
    EXPECT_EQ(panel.accessibleDescription(),
              "Starting… Not known yet. No client is paired. No recording is running.");
    EXPECT_EQ(panel.focusWidget(), button("Addresses…"));
}

TEST_F(PanelTest, APanelGoesOutOfTheWayAndAWindowStays) {
    for (const auto type : {Qt::Popup, Qt::Window}) {
        panel.setWindowFlags(type);
        panel.show();
        button("Settings…")->click();
        EXPECT_EQ(panel.isVisible(), type == Qt::Window);
        panel.show();
        press(Qt::Key_Escape);
        EXPECT_EQ(panel.isVisible(), type == Qt::Window);
    }
}

TEST_F(PanelTest, AFailedStartIsShownInFull) {
    CompanionOptions options;
    options.dataFolder = folder.path();
    options.navigationDatabase =
        folder.path() / "a-name-that-is-longer-than-any-line-of-the-panel-could-be.db";
    CompanionRuntime failing{store, options};
    RuntimeModel failingModel{failing};
    Panel failingPanel{failingModel};
    failingPanel.show();
    const int height = failingPanel.height();
    failing.start();
    QCoreApplication::processEvents();
    const auto texts = test::textsFromTop(failingPanel);
    EXPECT_EQ(texts.at(1), failing.statusText());
    EXPECT_THAT(texts.at(1), testing::StartsWith("Failed to start: "));
    EXPECT_EQ(failingPanel.width(), 360);
    EXPECT_GT(failingPanel.height(), height) << "a long text takes several lines";
    for (const auto* child : failingPanel.findChildren<QWidget*>()) {
        EXPECT_TRUE(child->isHidden() || failingPanel.rect().contains(child->geometry()));
    }
}

TEST_F(PanelTest, WhatIsNotAsItShouldBeStandsAboveAllElse) {
    EXPECT_EQ(test::textsFromTop(panel).size(), 9U);
    SettingsStore unreadable{folder.write("settings.json", "garbled"), nullptr};
    CompanionOptions options;
    options.dataFolder = folder.path();
    options.simulatorPort = 1; // nobody is there
    options.advertises = false;
    options.port = 0;
    CompanionRuntime warning{unreadable, options};
    RuntimeModel warningModel{warning};
    Panel warningPanel{warningModel, folder.path() / "a page.md"};
    warningPanel.show();
    EXPECT_FALSE(buttonIn(warningPanel, "Troubleshooting")->isVisible());
    warning.start();
    std::thread network([&] { warning.run(); });
    const auto isWarned = [&] { return warningModel.activity().warnings.has_value(); };
    EXPECT_TRUE(QTest::qWaitFor(isWarned, 60'000));
    const auto texts = test::textsFromTop(warningPanel);
    EXPECT_EQ(texts.at(1), unreadable.problems().at(0));
    EXPECT_TRUE(warningPanel.accessibleDescription().contains(QString::fromStdString(texts.at(1))));
    auto* troubleshooting = buttonIn(warningPanel, "Troubleshooting");
    EXPECT_TRUE(troubleshooting->isVisible());
    QSignalSpy pages(&warningPanel, &Panel::pageRequested);
    troubleshooting->click();
    ASSERT_EQ(pages.count(), 1);
    EXPECT_EQ(pages[0][0].toUrl().toLocalFile().toStdString(), folder.path() / "a page.md");
    warning.end();
    network.join();
}

} // namespace
} // namespace tarnly
