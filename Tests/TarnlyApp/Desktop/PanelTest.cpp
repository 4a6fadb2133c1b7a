#include "TarnlyApp/Desktop/Panel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QKeyEvent>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;

class MenuBarContentViewTest : public testing::Test {
  protected:
    QPushButton* button(const char* text) {
        for (auto* found : view.findChildren<QPushButton*>()) {
            if (found->text() == QString::fromUtf8(text)) return found;
        }
        return nullptr;
    }
    void press(Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &event);
    }

    const test::TemporaryFolder folder;
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, {}};
    RuntimeModel model{runtime};
    MenuBarContentView view{model};
};

TEST_F(MenuBarContentViewTest, HasItsTextsInTheirOrder) {
    view.show();
    EXPECT_EQ(view.width(), 280);
    EXPECT_EQ(view.layout()->contentsMargins(), QMargins(12, 12, 12, 12));
    EXPECT_EQ(view.windowTitle(), "Tarnly");
    EXPECT_THAT(test::textsFromTop(view),
                ElementsAre("Tarnly", "Starting…", "No client is paired.", "No recording is running.",
                            "Addresses…", "Settings…", "Quit Tarnly"));
}

TEST_F(MenuBarContentViewTest, ItsButtonsAskForWhatTheySay) {
    QSignalSpy addresses(&view, &MenuBarContentView::addressesRequested);
    QSignalSpy settings(&view, &MenuBarContentView::settingsRequested);
    QSignalSpy quit(&view, &MenuBarContentView::quitRequested);
    button("Addresses…")->click();
    EXPECT_EQ(addresses.count(), 1);
    button("Settings…")->click();
    EXPECT_EQ(settings.count(), 1);
    button("Quit Tarnly")->click();
    EXPECT_EQ(quit.count(), 1);
}

TEST_F(MenuBarContentViewTest, HasTheUsualShortcuts) {
    EXPECT_EQ(button("Settings…")->shortcut(), QKeySequence("Ctrl+,"));
    EXPECT_EQ(button("Quit Tarnly")->shortcut(), QKeySequence("Ctrl+Q"));
}

TEST_F(MenuBarContentViewTest, ReturnPressesTheButtonWithTheFocus) {
    QSignalSpy settings(&view, &MenuBarContentView::settingsRequested);
    view.show();
    button("Settings…")->setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(settings.count(), 1);
}

TEST_F(MenuBarContentViewTest, AScreenReaderIsToldWhatThePanelSays) {
    view.show();
    EXPECT_EQ(view.accessibleDescription(), "Starting… No client is paired. No recording is running.");
    EXPECT_EQ(view.focusWidget(), button("Addresses…"));
}

TEST_F(MenuBarContentViewTest, APanelGoesOutOfTheWayAndAWindowStays) {
    for (const auto type : {Qt::Popup, Qt::Window}) {
        view.setWindowFlags(type);
        view.show();
        button("Settings…")->click();
        EXPECT_EQ(view.isVisible(), type == Qt::Window);
        view.show();
        press(Qt::Key_Escape);
        EXPECT_EQ(view.isVisible(), type == Qt::Window);
    }
}

TEST_F(MenuBarContentViewTest, AFailedStartIsShownInFull) {
    CompanionOptions options;
    options.dataFolder = folder.path();
    options.navigationDatabase =
        folder.path() / "a-name-that-is-longer-than-any-line-of-the-panel-could-be.db";
    CompanionRuntime failing{store, options};
    RuntimeModel failingModel{failing};
    MenuBarContentView failingView{failingModel};
    failingView.show();
    const int height = failingView.height();
    failing.start();
    QCoreApplication::processEvents();
    const auto texts = test::textsFromTop(failingView);
    EXPECT_EQ(texts.at(1), failing.statusText());
    EXPECT_THAT(texts.at(1), testing::StartsWith("Failed to start: "));
    EXPECT_EQ(failingView.width(), 280);
    EXPECT_GT(failingView.height(), height) << "a long text takes several lines";
    for (const auto* child : failingView.findChildren<QWidget*>()) {
        EXPECT_TRUE(failingView.rect().contains(child->geometry()));
    }
}

} // namespace
} // namespace tarnly
