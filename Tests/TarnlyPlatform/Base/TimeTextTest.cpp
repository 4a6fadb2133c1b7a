#include "TarnlyPlatform/Base/TimeText.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace tarnly {
namespace {

TEST(TimeText, HasMinutesAndHoursWhereThereAreSome) {
    EXPECT_EQ(timeText(0), "0:00");
    EXPECT_EQ(timeText(59.99), "0:59");
    EXPECT_EQ(timeText(724), "12:04");
    EXPECT_EQ(timeText(3605), "1:00:05");
    EXPECT_EQ(timeText(86400), "24:00:00");
}

TEST(TimeText, HasASignBeforeTheStart) {
    EXPECT_EQ(timeText(-61), "-1:01");
    EXPECT_EQ(timeText(-0.4), "0:00");
}

TEST(TimeText, IsAStrokeForWhatIsNoTime) {
    EXPECT_EQ(timeText(std::nan("")), "-");
    EXPECT_EQ(timeText(HUGE_VAL), "-");
}

} // namespace
} // namespace tarnly
