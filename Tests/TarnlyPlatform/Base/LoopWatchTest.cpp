#include "TarnlyPlatform/Base/LoopWatch.hpp"

#include <gtest/gtest.h>

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Base/ThreadUse.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

struct LoopWatchTest : testing::Test {
    boost::asio::io_context loop;
    test::TemporaryFolder folder;
    const std::string file = (folder.path() / "turns").string();

    LoopWatchTest() { setenv("TARNLY_LOOP_WATCH", file.c_str(), 1); }
    ~LoopWatchTest() override { unsetenv("TARNLY_LOOP_WATCH"); }

    void post(const char* what, std::function<void()> work) {
        boost::asio::post(loop, [what, work = std::move(work)] {
            LoopWatch::note(what);
            work();
        });
    }

    /// What the long turns were about.
    std::vector<std::string> longTurns() {
        LoopWatch::run(loop);
        std::vector<std::string> found;
        std::ifstream lines(file);
        for (std::string line; std::getline(lines, line);)
            found.push_back(line.substr(line.find(": ") + 2));
        return found;
    }
};

void keepTheProcessorBusy() {
    const auto until = threadUse().processor + 5ms;
    while (threadUse().processor < until) {
    }
}

TEST_F(LoopWatchTest, TurnsThatHoldTheLoopAreToldOf) {
#ifndef TARNLY_LOOP_WATCH
    GTEST_SKIP() << "this build does not watch";
#endif
    post("short", [] {});
    post("busy", keepTheProcessorBusy);
    post("short", [] {});
    post("blocked", [] { std::this_thread::sleep_for(5ms); });
    EXPECT_EQ(longTurns(), (std::vector<std::string>{"busy", "blocked"}));
}

TEST_F(LoopWatchTest, WaitingForAnEventIsNoTurn) {
    boost::asio::steady_timer timer(loop, 20ms);
    timer.async_wait([](const boost::system::error_code&) { LoopWatch::note("timer"); });
    EXPECT_EQ(longTurns(), std::vector<std::string>());
}

TEST_F(LoopWatchTest, TheLoopRunsToItsEndWithoutAFileAsWell) {
    unsetenv("TARNLY_LOOP_WATCH");
    int runs = 0;
    post("", [&] { ++runs; });
    LoopWatch::run(loop);
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(loop.stopped());
}

} // namespace
} // namespace tarnly
