#include "TarnlyApp/Desktop/SettingsWindow.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QCheckBox>
#include <QLayout>
#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <array>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;

class SettingsWindowTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "settings.json";
    SettingsStore store{file, nullptr};
    SettingsWindow window{store};
    QLineEdit* password = window.findChild<QLineEdit*>();
    QCheckBox* startAtLogin = box(window, u"Start Tarnly at login"_s);

    static QCheckBox* box(const QWidget& window, const QString& text) {
        for (auto* box : window.findChildren<QCheckBox*>())
            if (box->text() == text) return box;
        return nullptr;
    }

    static QLineEdit* field(const QWidget& window, const QString& name) {
        for (auto* edit : window.findChildren<QLineEdit*>())
            if (edit->accessibleName() == name) return edit;
        return nullptr;
    }

    /// As a person who types it and leaves the field.
    void enter(const QString& name, const QString& text) {
        auto* edit = field(window, name);
        edit->setText(text);
        emit edit->editingFinished();
    }

    bool shows(const std::string& text) const {
        const auto texts = test::textsFromTop(window);
        return std::ranges::find(texts, text) != texts.end();
    }
};

TEST_F(SettingsWindowTest, HasItsTextsInTheirOrder) {
    window.show();
    EXPECT_EQ(window.width(), 420);
    EXPECT_EQ(window.layout()->contentsMargins(), QMargins(20, 20, 20, 20));
    EXPECT_THAT(
        test::textsFromTop(window),
        ElementsAre("Pairing", "Password", "Not set — open pairing.", "Network", "Name",
                    "By which tablets find this computer.", "Let tablets find this computer",
                    "Else its address has to be typed there.", "Port",
                    "Takes effect at the next start. Empty: 28086, or the next free one.", "Web pages",
                    "Which may connect, such as https://example.com; others are kept out.", "Simulator",
                    "Computer", "On which it runs. Takes effect at the next start.", "Web port",
                    "Of its web API. Takes effect at the next start.", "Saved flights",
                    "Choose saved flights", "Empty: those of the simulator on this computer.", "Fixes",
                    "Choose fixes", "The navigation database, for scripts that name fixes.", "Start",
                    "Start Tarnly at login", "In the tray, with these settings."));
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
    EXPECT_TRUE(box(later, u"Start Tarnly at login"_s)->isChecked());
    EXPECT_THAT(test::textsFromTop(later), testing::Contains("Set."));
}

/// What the window shows and keeps of each.
TEST_F(SettingsWindowTest, WhatTheCompanionGoesByIsKept) {
    enter(u"Name"_s, u" Left rig "_s);
    enter(u"Port"_s, u"41234"_s);
    enter(u"Web pages"_s, u"https://example.com, http://192.0.2.8:8080"_s);
    enter(u"Computer"_s, u"192.0.2.7"_s);
    enter(u"Web port"_s, u"8090"_s);
    enter(u"Saved flights"_s, u"/srv/situations"_s);
    enter(u"Fixes"_s, u"/srv/nav.db"_s);
    box(window, u"Let tablets find this computer"_s)->click();
    AppSettings expected;
    expected.name = "Left rig";
    expected.port = 41234;
    expected.allowedOrigins = {"https://example.com", "http://192.0.2.8:8080"};
    expected.simulatorHost = "192.0.2.7";
    expected.simulatorPort = 8090;
    expected.situationsFolder = "/srv/situations";
    expected.navigationDatabase = "/srv/nav.db";
    expected.advertise = false;
    EXPECT_EQ(store.current(), expected);
    const SettingsWindow later(store);
    EXPECT_EQ(field(later, u"Name"_s)->text(), u"Left rig"_s);
    EXPECT_EQ(field(later, u"Port"_s)->text(), u"41234"_s);
    EXPECT_EQ(field(later, u"Web pages"_s)->text(), u"https://example.com http://192.0.2.8:8080"_s);
    EXPECT_EQ(field(later, u"Fixes"_s)->text(), u"/srv/nav.db"_s);
    EXPECT_FALSE(box(later, u"Let tablets find this computer"_s)->isChecked());
    for (const auto& name :
         {u"Name"_s, u"Port"_s, u"Web pages"_s, u"Computer"_s, u"Web port"_s, u"Saved flights"_s, u"Fixes"_s})
        enter(name, QString());
    box(window, u"Let tablets find this computer"_s)->click();
    EXPECT_EQ(store.current(), AppSettings());
}

TEST_F(SettingsWindowTest, WhatCannotBeIsSaidBesideItsFieldAndNotKept) {
    store.set(&AppSettings::port, 41234);
    const std::vector<std::array<QString, 3>> wrong{
        {u"Port"_s, u"70000"_s, u"Not saved: a number from 0 to 65535 is wanted."_s},
        {u"Port"_s, u"x"_s, u"Not saved: a number from 0 to 65535 is wanted."_s},
        {u"Web port"_s, u"0"_s, u"Not saved: a number from 1 to 65535 is wanted."_s},
        {u"Computer"_s, u"[::1]"_s, u"Not saved: a host name or an address without brackets is wanted."_s},
        {u"Saved flights"_s, u"situations"_s,
         u"Not saved: a path from the root on, such as /home/pilot, is wanted."_s},
        {u"Web pages"_s, u"https://example.com example.com"_s,
         u"Not saved: an origin such as https://example.com is wanted, without a path."_s}};
    AppSettings expected;
    expected.port = 41234;
    for (const auto& [name, text, said] : wrong) {
        enter(name, text);
        EXPECT_TRUE(shows(said.toStdString())) << said.toStdString();
        EXPECT_EQ(field(window, name)->accessibleDescription(), said);
        EXPECT_EQ(store.current(), expected);
    }
    enter(u"Port"_s, u"0"_s);
    EXPECT_FALSE(shows("Not saved: a number from 0 to 65535 is wanted."));
    EXPECT_EQ(store.current().port, 0);
}

TEST_F(SettingsWindowTest, ToTypeKeepsNothingBeforeAPauseOrTheWindowsEnd) {
    window.show();
    auto* name = field(window, u"Name"_s);
    QTest::keyClicks(name, u"rig"_s);
    EXPECT_FALSE(store.current().name);
    EXPECT_TRUE(QTest::qWaitFor([&] { return store.current().name == "rig"; }, 60'000));
    QTest::keyClicks(name, u"42"_s);
    window.close();
    EXPECT_EQ(store.current().name, "rig42");
}

TEST_F(SettingsWindowTest, ToOpenAndCloseChangesNothing) {
    store.set(&AppSettings::allowedOrigins, std::vector<std::string>());
    int changes = 0;
    store.onSetupChange = [&] { ++changes; };
    {
        SettingsWindow other(store);
        other.show();
        other.close();
    }
    EXPECT_EQ(changes, 0);
}

TEST_F(SettingsWindowTest, SaysWhatTheCommandLineSaysForThisRun) {
    CompanionOptions options;
    options.name = "Right rig";
    options.port = 41234;
    options.advertises = false;
    SettingsWindow overruled(store, options);
    overruled.show();
    const auto texts = test::textsFromTop(overruled);
    for (const char* said :
         {"For this run the command line says Right rig.", "For this run the command line says 41234.",
          "For this run the command line says no."})
        EXPECT_THAT(texts, testing::Contains(said));
    options.advertises = true;
    SettingsWindow published(store, options);
    published.show();
    EXPECT_THAT(test::textsFromTop(published), testing::Contains("For this run the command line says yes."));
    EXPECT_EQ(field(overruled, u"Name"_s)->text(), QString()) << "the setting";
}

} // namespace
} // namespace tarnly
