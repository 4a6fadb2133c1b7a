#include "TarnlyApp/Desktop/ReachWindow.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QPushButton>
#include <QTest>
#include <algorithm>

#include "TarnlyApp/Desktop/RunningCompanion.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using test::patienceMilliseconds;

class ReachWindowTest : public test::RunningCompanionTest {
  protected:
    static bool shows(const QWidget& window, const std::string& text) {
        return std::ranges::count(test::textsFromTop(window), text) > 0;
    }

    static bool waitToShow(const QWidget& window, const std::string& text) {
        return QTest::qWaitFor([&] { return shows(window, text); }, patienceMilliseconds);
    }

    static void press(const QWidget& window, const QString& text) {
        for (auto* button : window.findChildren<QPushButton*>())
            if (button->text() == text) button->click();
    }
};

TEST_F(ReachWindowTest, WithoutAPortNothingCanBeTested) {
    ReachWindow window(model);
    window.show();
    EXPECT_TRUE(shows(window, "It cannot be tested"));
    EXPECT_TRUE(shows(window, "Tarnly is not listening."));
    EXPECT_TRUE(shows(window, "Test again"));
    start();
    if (model.addresses().empty()) GTEST_SKIP() << "this computer has no network";
    EXPECT_TRUE(waitToShow(window, "Waiting for a device…")) << "by itself, once there is one";
}

TEST_F(ReachWindowTest, TheTimeEndsAndTheTestMayBeginAgain) {
    start();
    if (model.addresses().empty()) GTEST_SKIP() << "this computer has no network";
    ReachWindow brief(model, 1ms);
    brief.show();
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(waitToShow(brief, "It never arrived"));
        const auto never = ReachTest::neverArrived(model.activity());
        EXPECT_TRUE(shows(brief, never.text.text()) && shows(brief, never.cure.text()));
        EXPECT_THAT(never.cure.text(), testing::HasSubstr(std::to_string(*model.port())));
        press(brief, "Test again");
        EXPECT_TRUE(shows(brief, "Waiting for a device…"));
        EXPECT_FALSE(shows(brief, "Test again"));
    }
}

TEST_F(ReachWindowTest, AWindowThatIsClosedWaitsForNobody) {
    start();
    if (model.addresses().empty()) GTEST_SKIP() << "this computer has no network";
    ReachWindow brief(model, 1ms);
    brief.show();
    brief.close();
    ReachWindow other(model, 1ms);
    other.show();
    EXPECT_TRUE(waitToShow(other, "It never arrived")); // its question was asked after the first one's
    EXPECT_TRUE(shows(brief, "Waiting for a device…"));
}

} // namespace
} // namespace tarnly
