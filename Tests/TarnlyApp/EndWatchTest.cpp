#include "TarnlyApp/EndWatch.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace tarnly {
namespace {

using namespace std::chrono_literals;

struct EndWatchTest : testing::Test {
    EndWatchTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(EndWatchTest, WhatHangsEndsWithTheProcess) {
    const auto hang = [] {
        EndWatch watch;
        watch.expectEnd(1ms, 7);
        std::this_thread::sleep_for(10min);
    };
    EXPECT_EXIT(hang(), testing::ExitedWithCode(7), "");
}

TEST_F(EndWatchTest, TheLastLimitCounts) {
    const auto hang = [] {
        EndWatch watch;
        watch.expectEnd(1h, 7);
        watch.expectEnd(1ms, 8);
        std::this_thread::sleep_for(10min);
    };
    EXPECT_EXIT(hang(), testing::ExitedWithCode(8), "");
}

TEST_F(EndWatchTest, WhatEndsByItselfIsNotWaitedFor) {
    const auto begin = std::chrono::steady_clock::now();
    {
        EndWatch watch;
        watch.expectEnd(1h, 7);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 30min);
}

} // namespace
} // namespace tarnly
