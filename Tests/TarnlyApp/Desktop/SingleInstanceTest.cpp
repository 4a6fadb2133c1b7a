#include "TarnlyApp/Desktop/SingleInstance.hpp"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSignalSpy>
#include <future>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using Outcome = SingleInstance::Outcome;

class SingleInstanceTest : public testing::Test {
  protected:
    /// As another process would, while this one serves its events.
    Outcome claimElsewhere(bool asksForPanel) {
        auto outcome =
            std::async(std::launch::async, [&] { return SingleInstance(path).claim(asksForPanel); });
        while (outcome.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
            QCoreApplication::processEvents();
        }
        return outcome.get();
    }

    const test::TemporaryFolder folder;
    const QString path = QString::fromStdString(folder.path().string());
};

TEST_F(SingleInstanceTest, TheFirstGoesOn) {
    SingleInstance first(path);
    EXPECT_EQ(first.claim(true), Outcome::first);
}

TEST_F(SingleInstanceTest, TheSecondTellsTheFirst) {
    SingleInstance first(path);
    ASSERT_EQ(first.claim(true), Outcome::first);
    const QSignalSpy requests(&first, &SingleInstance::panelRequested);
    EXPECT_EQ(claimElsewhere(true), Outcome::toldFirst);
    EXPECT_EQ(requests.count(), 1);
    EXPECT_EQ(claimElsewhere(true), Outcome::toldFirst);
    EXPECT_EQ(requests.count(), 2);
}

TEST_F(SingleInstanceTest, OneThatStartsInTheBackgroundAsksForNothing) {
    SingleInstance first(path);
    ASSERT_EQ(first.claim(true), Outcome::first);
    const QSignalSpy requests(&first, &SingleInstance::panelRequested);
    EXPECT_EQ(claimElsewhere(false), Outcome::toldFirst);
    EXPECT_EQ(requests.count(), 0);
}

TEST_F(SingleInstanceTest, AfterTheFirstHasEndedTheNextIsFirst) {
    { EXPECT_EQ(SingleInstance(path).claim(true), Outcome::first); }
    EXPECT_EQ(SingleInstance(path).claim(true), Outcome::first);
}

TEST_F(SingleInstanceTest, OneThatDoesNotAnswerIsToldFromNone) {
    QLockFile held(path + "/tarnly.lock");
    ASSERT_TRUE(held.tryLock());
    EXPECT_EQ(SingleInstance(path).claim(true, std::chrono::milliseconds(100)), Outcome::noAnswer);
    held.unlock();
    EXPECT_EQ(SingleInstance(path).claim(true, std::chrono::milliseconds(100)), Outcome::first);
}

TEST_F(SingleInstanceTest, WithoutAFolderNothingIsKnown) {
    EXPECT_EQ(SingleInstance(path + "/missing").claim(true), Outcome::unknown);
}

TEST_F(SingleInstanceTest, EachDisplayHasItsOwnHoweverItIsSpelt) {
    qputenv("DISPLAY", ":7");
    SingleInstance first(path);
    ASSERT_EQ(first.claim(true), Outcome::first);
    for (const char* same : {":7.0", "unix:7", "unix:7.1"}) {
        qputenv("DISPLAY", same);
        EXPECT_EQ(claimElsewhere(true), Outcome::toldFirst) << same;
    }
    for (const char* other : {":70", ":8", "rig:7"}) {
        qputenv("DISPLAY", other);
        EXPECT_EQ(claimElsewhere(true), Outcome::first) << other;
    }
    qunsetenv("DISPLAY");
}

TEST_F(SingleInstanceTest, TheDesktopsLeaveIsHandedOver) {
    SingleInstance first(path);
    ASSERT_EQ(first.claim(true), Outcome::first);
    const QSignalSpy requests(&first, &SingleInstance::panelRequested);
    qputenv("XDG_ACTIVATION_TOKEN", "token-7");
    claimElsewhere(true);
    qunsetenv("XDG_ACTIVATION_TOKEN");
    ASSERT_EQ(requests.count(), 1);
    EXPECT_EQ(requests.front().front().toByteArray(), "token-7");
}

} // namespace
} // namespace tarnly
