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

class SettingsViewTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "settings.json";
    SettingsStore store{file, nullptr};
    SettingsView view{store};
    QLineEdit* password = view.findChild<QLineEdit*>();
    QCheckBox* startAtLogin = view.findChild<QCheckBox*>();
};

TEST_F(SettingsViewTest, HasItsTextsInTheirOrder) {
    view.show();
    EXPECT_EQ(view.width(), 420);
    EXPECT_EQ(view.layout()->contentsMargins(), QMargins(20, 20, 20, 20));
    EXPECT_THAT(test::textsFromTop(view),
                ElementsAre("Pairing", "Password", "Not set — open pairing.", "Start Tarnly at login"));
}

TEST_F(SettingsViewTest, HidesThePasswordAndNamesItsField) {
    EXPECT_EQ(password->echoMode(), QLineEdit::Password);
    const auto* accessible = QAccessible::queryAccessibleInterface(password);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Password");
}

TEST_F(SettingsViewTest, EveryKeystrokeGoesToTheStore) {
    std::vector<std::string> told;
    store.onPasswordChange = [&] { told.push_back(store.password()); };
    password->insert("a");
    password->insert("ü");
    password->backspace();
    EXPECT_THAT(told, ElementsAre("a", "aü", "a"));
    EXPECT_EQ(AppSettings::load(file).password, "a");
}

TEST_F(SettingsViewTest, SaysWhetherAPasswordIsSet) {
    password->setText("secret");
    EXPECT_THAT(test::textsFromTop(view), testing::Contains("Set."));
    password->clear();
    EXPECT_THAT(test::textsFromTop(view), testing::Contains("Not set — open pairing."));
    EXPECT_EQ(AppSettings::load(file).password, std::nullopt);
}

TEST_F(SettingsViewTest, TheToggleGoesToTheStore) {
    EXPECT_FALSE(startAtLogin->isChecked());
    startAtLogin->click();
    EXPECT_TRUE(store.startAtLogin());
    startAtLogin->click();
    EXPECT_FALSE(store.startAtLogin());
}

TEST_F(SettingsViewTest, BeginsWithWhatIsSet) {
    store.setPassword("secret");
    store.setStartAtLogin(true);
    const SettingsView later(store);
    EXPECT_EQ(later.findChild<QLineEdit*>()->text(), "secret");
    EXPECT_TRUE(later.findChild<QCheckBox*>()->isChecked());
    EXPECT_THAT(test::textsFromTop(later), testing::Contains("Set."));
}

} // namespace
} // namespace tarnly
