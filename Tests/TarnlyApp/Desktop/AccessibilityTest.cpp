#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <set>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/AddressesWindow.hpp"
#include "TarnlyApp/Desktop/ClientList.hpp"
#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/QrCodeWidget.hpp"
#include "TarnlyApp/Desktop/ReachWindow.hpp"
#include "TarnlyApp/Desktop/SettingsWindow.hpp"

namespace tarnly {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

/// What tells something, or can be used.
const std::set<QAccessible::Role> informative{
    QAccessible::Window,       QAccessible::Dialog,   QAccessible::Grouping,   QAccessible::StaticText,
    QAccessible::EditableText, QAccessible::Button,   QAccessible::CheckBox,   QAccessible::ComboBox,
    QAccessible::List,         QAccessible::ListItem, QAccessible::Graphic,    QAccessible::Link,
    QAccessible::RadioButton,  QAccessible::Slider,   QAccessible::ProgressBar};

/// Nothing but a box around others.
bool isBox(const QAccessibleInterface& element) {
    return element.role() == QAccessible::Client && element.childCount() > 0;
}

template <typename Visit>
void walk(QAccessibleInterface* element, const Visit& visit) {
    if (element == nullptr || element->state().invisible) return;
    visit(*element);
    for (int i = 0; i < element->childCount(); ++i)
        walk(element->child(i), visit);
}

std::vector<std::string> nameless(QWidget& window) {
    std::vector<std::string> found;
    walk(QAccessible::queryAccessibleInterface(&window), [&](const QAccessibleInterface& element) {
        const auto state = element.state();
        const bool isLeaf = element.childCount() == 0 && element.role() == QAccessible::Client;
        const bool needsName =
            informative.contains(element.role()) || isLeaf || (state.focusable && !isBox(element));
        if (!needsName || !element.text(QAccessible::Name).isEmpty()) return;
        const auto* object = element.object();
        found.push_back("role " + std::to_string(element.role()) + ", " +
                        (object != nullptr ? object->metaObject()->className() : "no object"));
    });
    return found;
}

/// "role name" of all that is there.
std::vector<std::string> described(QWidget& window, QAccessible::Role role) {
    std::vector<std::string> found;
    walk(QAccessible::queryAccessibleInterface(&window), [&](const QAccessibleInterface& element) {
        if (element.role() != role) return;
        const auto description = element.text(QAccessible::Description);
        found.push_back((element.text(QAccessible::Name) + ": " + description).toStdString());
    });
    return found;
}

TEST(Accessibility, TheTestSeesWhatHasNoName) {
    QWidget window;
    window.setWindowTitle("Planted");
    QVBoxLayout layout(&window);
    QCheckBox checkBox;
    QComboBox comboBox;
    QLineEdit edit;
    QListWidget list;
    QPushButton button;
    QWidget painted;
    painted.setMinimumSize(10, 10);
    for (QWidget* widget :
         std::initializer_list<QWidget*>{&checkBox, &comboBox, &edit, &list, &button, &painted})
        layout.addWidget(widget);
    window.show();
    EXPECT_THAT(nameless(window), SizeIs(testing::Ge(6U)));
    for (QWidget* widget :
         std::initializer_list<QWidget*>{&checkBox, &comboBox, &edit, &list, &button, &painted})
        widget->setAccessibleName("named");
    EXPECT_THAT(nameless(window), IsEmpty());
}

class AccessibilityTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, {}};
    RuntimeModel model{runtime};
};

TEST_F(AccessibilityTest, AllOfThePanelHasANameAndItsButtonsSayWhatTheyDo) {
    Panel panel(model);
    panel.show();
    EXPECT_THAT(nameless(panel), IsEmpty());
    const auto buttons = described(panel, QAccessible::Button);
    EXPECT_THAT(buttons, SizeIs(4));
    for (const auto& button : buttons)
        EXPECT_FALSE(button.ends_with(": ")) << button << "has no description";
    EXPECT_THAT(described(panel, QAccessible::Grouping), SizeIs(testing::Ge(3U))); // one is empty
}

TEST_F(AccessibilityTest, AllOfTheOtherWindowsHasAName) {
    AddressesWindow addresses(model);
    ReachWindow reach(model);
    SettingsWindow settings(store);
    for (QWidget* window : std::initializer_list<QWidget*>{&addresses, &reach, &settings}) {
        window->show();
        EXPECT_THAT(nameless(*window), IsEmpty()) << window->windowTitle().toStdString();
    }
}

TEST_F(AccessibilityTest, AClientsButtonSaysWhomItDisconnects) {
    ClientList list;
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    list.showClients(ClientsStatus::of({{1, "192.168.1.30", now, 2}, {2, "127.0.0.1", now, 1}}, 2));
    list.show();
    EXPECT_THAT(nameless(list), IsEmpty());
    EXPECT_THAT(described(list, QAccessible::Button),
                Contains("Disconnect 192.168.1.30: Ends its connection; it may come back and pair again."));
}

TEST(Accessibility, ACodeIsAPictureThatNamesItsText) {
    QrCodeWidget code;
    code.showCode("http://192.168.1.20:28086/");
    code.show();
    EXPECT_THAT(described(code, QAccessible::Graphic),
                testing::ElementsAre(testing::StartsWith("QR code of http://192.168.1.20:28086/: ")));
    EXPECT_THAT(nameless(code), IsEmpty());
}

} // namespace
} // namespace tarnly
