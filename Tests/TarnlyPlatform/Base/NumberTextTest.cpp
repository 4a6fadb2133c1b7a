#include "TarnlyPlatform/Base/NumberText.hpp"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace tarnly {
namespace {

template <typename Number>
std::string text(Number value) {
    std::string out = "x";
    appendNumber(out, value);
    return out.substr(1);
}

TEST(NumberText, WholeNumbersAreDigits) {
    EXPECT_EQ(text(0.0), "0");
    EXPECT_EQ(text(100000.0), "100000");
    EXPECT_EQ(text(-100000.0), "-100000");
    EXPECT_EQ(text(1e15), "1000000000000000");
    EXPECT_EQ(text(9007199254740993.0), "9007199254740992");
    EXPECT_EQ(text(9999999999999998.0), "9999999999999998");
    EXPECT_EQ(text(-9999999999999998.0), "-9999999999999998");
}

TEST(NumberText, OtherNumbersTakeTheShortestForm) {
    EXPECT_EQ(text(-0.0), "-0");
    EXPECT_EQ(text(0.5), "0.5");
    EXPECT_EQ(text(-0.25), "-0.25");
    EXPECT_EQ(text(123456.75), "123456.75");
    EXPECT_EQ(text(1e16), "1e+16");
    EXPECT_EQ(text(-1e16), "-1e+16");
    EXPECT_EQ(text(1e300), "1e+300");
    EXPECT_EQ(text(5e-324), "5e-324");
}

TEST(NumberText, SinglesReadBackAsTheSameSingle) {
    EXPECT_EQ(text(100000.0F), "100000");
    EXPECT_EQ(text(0.1F), "0.1");
    EXPECT_EQ(text(-0.0F), "-0");
    EXPECT_EQ(text(std::nextafter(1e16F, 0.0F)), "9999999198822400");
    EXPECT_EQ(text(1e16F), "1e+16");
}

TEST(NumberText, IntegersAreDigits) {
    EXPECT_EQ(text(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(NumberText, EveryDoubleReadsBackTheSame) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 100'000; ++i) {
        const double value = std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 80) - 75);
        const auto written = text(value);
        double read = 0;
        std::from_chars(written.data(), written.data() + written.size(), read);
        ASSERT_EQ(read, value) << written;
    }
}

} // namespace
} // namespace tarnly
