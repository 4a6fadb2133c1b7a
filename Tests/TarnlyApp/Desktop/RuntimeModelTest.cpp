#include "TarnlyApp/Desktop/RuntimeModel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

constexpr int patienceMilliseconds = 60'000;

/// A companion that runs on a thread of its own, without a simulator.
class RuntimeModelTest : public testing::Test {
  protected:
    ~RuntimeModelTest() override {
        runtime.end();
        if (network.joinable()) network.join();
    }

    void start() {
        runtime.start();
        network = std::thread([this] { runtime.run(); });
        ASSERT_TRUE(QTest::qWaitFor([&] { return model.activity().stage && model.activity().port; },
                                    patienceMilliseconds));
    }

    const test::TemporaryFolder folder;
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, options()};
    RuntimeModel model{runtime};
    std::thread network;

  private:
    CompanionOptions options() const {
        CompanionOptions result;
        result.dataFolder = folder.path();
        result.simulatorPort = 1;
        result.advertises = false;
        result.port = 0;
        return result;
    }
};

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
