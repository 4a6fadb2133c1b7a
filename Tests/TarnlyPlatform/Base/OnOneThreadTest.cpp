#include "TarnlyPlatform/Base/OnOneThread.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(OnOneThread, TheThreadThatAsksFirstMayAskAgain) {
    const OnOneThread built;
    std::thread([&] {
        built.check();
        built.check();
    }).join();
}

#ifndef NDEBUG
TEST(OnOneThreadDeathTest, AnotherThreadEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const OnOneThread here;
    here.check();
    EXPECT_DEATH(std::thread([&] { here.check(); }).join(), "belongs to one thread");
}
#endif

} // namespace
} // namespace tarnly
