#include "TarnlyPlatform/Base/Columns.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(Columns, ACharacterTakesOneHoweverManyBytesItHas) {
    EXPECT_EQ(widthOf(""), 0U);
    EXPECT_EQ(widthOf("height"), 6U);
    EXPECT_EQ(widthOf("Höhe"), 4U);
    EXPECT_EQ(widthOf("高度"), 2U);
}

TEST(Columns, APaddedTextHasItsWidthOrMore) {
    EXPECT_EQ(padded("Höhe", 6), "Höhe  ");
    EXPECT_EQ(padded("height", 6), "height");
    EXPECT_EQ(padded("heights", 6), "heights");
}

} // namespace
} // namespace tarnly
