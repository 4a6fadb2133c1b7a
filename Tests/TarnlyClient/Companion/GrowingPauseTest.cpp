#include "TarnlyClient/Companion/GrowingPause.hpp"

#include <gtest/gtest.h>

namespace tarnly::client {
namespace {

using std::chrono::milliseconds;

TEST(GrowingPause, DoublesUpToItsLimitAndBeginsAnew) {
    GrowingPause pause(milliseconds(500), milliseconds(5'000));
    for (const int expected : {500, 1'000, 2'000, 4'000, 5'000, 5'000})
        EXPECT_EQ(pause.next(), milliseconds(expected));
    pause.reset();
    EXPECT_EQ(pause.next(), milliseconds(500));
    EXPECT_EQ(pause.next(), milliseconds(1'000));
}

} // namespace
} // namespace tarnly::client
