#include "TarnlyPlatform/Json/JsonNumber.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace tarnly {
namespace {

constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();

TEST(JsonNumber, WholeNumbersAreKnownHoweverTheyAreWritten) {
    EXPECT_EQ(wholeNumber("7"), 7);
    EXPECT_EQ(wholeNumber("-7.000"), -7);
    EXPECT_EQ(wholeNumber("0.07e2"), 7);
    EXPECT_EQ(wholeNumber("70E-1"), 7);
    EXPECT_EQ(wholeNumber("1e+2"), 100);
    EXPECT_EQ(wholeNumber("0"), 0);
    EXPECT_EQ(wholeNumber("0.0e99999999999999999999"), 0);
    EXPECT_EQ(wholeNumber("9007199254740993.0"), 9007199254740993);
    EXPECT_EQ(wholeNumber("1" + std::string(400, '0') + "e-400"), 1);
}

TEST(JsonNumber, TheRangeIsExact) {
    EXPECT_EQ(wholeNumber("9223372036854775807"), largest);
    EXPECT_EQ(wholeNumber("9223372036854775807.0"), largest);
    EXPECT_EQ(wholeNumber("-9223372036854775808"), smallest);
    EXPECT_EQ(wholeNumber("-9.223372036854775808e18"), smallest);
    for (const char* text : {"9223372036854775808", "-9223372036854775809", "1e19", "92233720368547758070",
                             "1e999999999999", "1e99999999999999999999"}) {
        EXPECT_FALSE(wholeNumber(text)) << text;
    }
}

TEST(JsonNumber, FractionsAreNoWholeNumbers) {
    for (const char* text : {"7.5", "-9223372036854775808.5", "9007199254740992.5", "1e-400",
                             "1e-99999999999999999999", "0.1", "15e-1"}) {
        EXPECT_FALSE(wholeNumber(text)) << text;
    }
}

TEST(JsonNumber, MinusZeroIsADouble) {
    for (const char* text : {"-0", "-0.0", "-0e5"}) {
        EXPECT_FALSE(wholeNumber(text)) << text;
        EXPECT_TRUE(std::signbit(nearestDouble(text, 0))) << text;
    }
}

TEST(JsonNumber, DoublesBeyondTheRangeAreInfiniteOrTiny) {
    EXPECT_EQ(nearestDouble("-1e400", -1e300), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(nearestDouble("1e-400", 0), 0);
    EXPECT_EQ(nearestDouble("0.1", 0.2), 0.1);
}

} // namespace
} // namespace tarnly
