#include "TarnlyApp/Desktop/SettingsWindow.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QCheckBox>
#include <QLayout>
#include <QLineEdit>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;

class SettingsWindowTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "settings.json";
    SettingsStore store{file, nullptr};
    SettingsWindow window{store};
    QLineEdit* password = window.findChild<QLineEdit*>();
    QCheckBox* startAtLogin = window.findChild<QCheckBox*>();
};

TEST_F(SettingsWindowTest, HasItsTextsInTheirOrder) {
    window.show();
    EXPECT_EQ(window.width(), 420);
    EXPECT_EQ(window.layout()->contentsMargins(), QMargins(20, 20, 20, 20));
    EXPECT_THAT(test::textsFromTop(window),
                ElementsAre("Pairing", "Password", "Not set — open pairing.", "Start Tarnly at login"));
}

TEST_F(SettingsWindowTest, HidesThePasswordAndNamesItsField) {
    EXPECT_EQ(password->echoMode(), QLineEdit::Password);
    const auto* accessible = QAccessible::queryAccessibleInterface(password);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Password");
}

TEST_F(SettingsWindowTest, EveryKeystrokeGoesToTheStore) {
    std::vector<std::string> told;
    store.onPasswordChange = [&] { told.push_back(store.password()); };
    password->insert("a");
    password->insert("ü");
    password->backspace();
    EXPECT_THAT(told, ElementsAre("a", "aü", "a"));
    store.finishSaving();
    EXPECT_EQ(SettingsFile(file).initial().password, "a");
}

TEST_F(SettingsWindowTest, SaysWhetherAPasswordIsSet) {
    password->setText("secret");
    EXPECT_THAT(test::textsFromTop(window), testing::Contains("Set."));
    password->clear();
    EXPECT_THAT(test::textsFromTop(window), testing::Contains("Not set — open pairing."));
    store.finishSaving();
    EXPECT_EQ(SettingsFile(file).initial().password, std::nullopt);
}

TEST_F(SettingsWindowTest, TheToggleGoesToTheStore) {
    EXPECT_FALSE(startAtLogin->isChecked());
    startAtLogin->click();
    EXPECT_TRUE(store.startAtLogin());
    startAtLogin->click();
    EXPECT_FALSE(store.startAtLogin());
}

TEST_F(SettingsWindowTest, BeginsWithWhatIsSet) {
    store.setPassword("secret");
    store.setStartAtLogin(true);
    const SettingsWindow later(store);
    EXPECT_EQ(later.findChild<QLineEdit*>()->text(), "secret");
    EXPECT_TRUE(later.findChild<QCheckBox*>()->isChecked());
    EXPECT_THAT(test::textsFromTop(later), testing::Contains("Set."));
}

} // namespace
} // namespace tarnly
