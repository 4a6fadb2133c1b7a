#include "TarnlyApp/Desktop/RuntimeModel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/RunningCompanion.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

class RuntimeModelTest : public test::RunningCompanionTest {};

TEST_F(RuntimeModelTest, KnowsHowItStandsWithoutBeingLookedAt) {
    EXPECT_FALSE(model.activity().stage);
    start();
    EXPECT_EQ(model.activity().words, runtime.statusText());
}

TEST_F(RuntimeModelTest, ThePanelSaysTheStagesWords) {
    Panel panel(model);
    start();
    panel.show();
    const auto words = stageSentences(*model.activity().stage).text();
    EXPECT_THAT(
        test::textsFromTop(panel),
        testing::ElementsAre("Tarnly", runtime.statusText().text(), "Addresses…", "Test from a phone…", words,
                             "No client is paired.", "No recording is running.", "Settings…", "Quit Tarnly"));
    EXPECT_THAT(panel.accessibleDescription().toStdString(), testing::HasSubstr(words));
}

} // namespace
} // namespace tarnly
