#include "TarnlyApp/Desktop/DisplayLoss.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDebug>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <optional>
#include <thread>

namespace tarnly {
namespace {

using testing::ExitedWithCode;

struct DisplayLossTest : testing::Test {
    int notices = 0;
    std::optional<DisplayLoss> loss{std::in_place, [this] { ++notices; }};
};

TEST_F(DisplayLossTest, TheLastWordOfX11IsNoticedOnce) {
    qWarning("The X11 connection broke (error 1). Did the X11 server die?");
    EXPECT_EQ(notices, 1);
    qWarning("The X11 connection broke (error 1). Did the X11 server die?");
    EXPECT_EQ(notices, 1);
}

TEST_F(DisplayLossTest, ThoseOfWaylandAreNoticed) {
    qWarning("The Wayland connection broke. Did the Wayland compositor die?");
    EXPECT_EQ(notices, 1);
    loss.reset();
    loss.emplace([this] { ++notices; });
    qWarning("The Wayland connection experienced a fatal error: Protocol error");
    EXPECT_EQ(notices, 2);
}

TEST_F(DisplayLossTest, OtherWordsAreNone) {
    qWarning("QObject::connect: the X11 connection broke");
    qWarning("The file broke");
    EXPECT_EQ(notices, 0);
}

TEST_F(DisplayLossTest, NobodyIsToldAfterItsEnd) {
    loss.reset();
    qWarning("The X11 connection broke (error 1). Did the X11 server die?");
    EXPECT_EQ(notices, 0);
}

TEST(DisplayLossDeathTest, AnExitThatNobodyAnnouncedIsNoticed) {
    const auto exits = [] {
        const DisplayLoss loss([] { std::fputs("the lesson is over", stderr); });
        std::exit(1);
    };
    EXPECT_EXIT(exits(), ExitedWithCode(1), "the lesson is over");
}

TEST(DisplayLossDeathTest, TheLastWordOfAnotherThreadIsNoticedOnTheMainThread) {
    const auto exits = [] {
        const auto mainThread = std::this_thread::get_id();
        const DisplayLoss loss([&] {
            std::fputs(std::this_thread::get_id() == mainThread ? "the main thread" : "another", stderr);
        });
        std::thread([] {
            qWarning("The Wayland connection broke. Did the Wayland compositor die?");
            std::_Exit(7);
        }).detach();
        QCoreApplication::exec();
    };
    EXPECT_EXIT(exits(), ExitedWithCode(1), "the main thread");
}

/// Wayland's threads hear of it one after the other.
TEST(DisplayLossDeathTest, TheLastWordOfAThreadDoesNotEndALessonThatIsBeingFinished) {
    const auto exits = [] {
        static std::promise<void> said;
        qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString&) { said.set_value(); });
        const DisplayLoss loss([] {
            std::thread([] {
                qWarning("The Wayland connection broke. Did the Wayland compositor die?");
                std::_Exit(7);
            }).detach();
            said.get_future().wait();
            std::this_thread::sleep_for(std::chrono::milliseconds(100)); // in which it would have ended
            std::fputs("the lesson is over", stderr);
        });
        std::exit(1);
    };
    EXPECT_EXIT(exits(), ExitedWithCode(1), "the lesson is over");
}

TEST(DisplayLossDeathTest, AnExitAfterItsEndIsNone) {
    const auto exits = [] {
        {
            const DisplayLoss loss([] { std::_Exit(7); });
        }
        std::exit(0);
    };
    EXPECT_EXIT(exits(), ExitedWithCode(0), "");
}

} // namespace
} // namespace tarnly
