#include "TarnlySimulator/World/Value.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tarnly::simulator {
namespace {

std::string text(ValueType type, const Value& value) {
    std::string out;
    appendValue(out, type, value);
    return out;
}

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(Value, DoublesTakeTheirShortestExactForm) {
    EXPECT_EQ(text(ValueType::real, 47.123456789012345), "47.123456789012344");
    EXPECT_EQ(text(ValueType::real, 3.5), "3.5");
    EXPECT_EQ(text(ValueType::real, -7.0), "-7");
}

TEST(Value, SinglesAreRoundedToSinglePrecision) {
    EXPECT_EQ(text(ValueType::single, 0.1), "0.1");
    EXPECT_EQ(text(ValueType::single, 47.123456789), "47.123455");
    EXPECT_EQ(text(ValueType::single, 1e39), "1e+9999");
    EXPECT_EQ(text(ValueType::single, -1e39), "-1e+9999");
}

TEST(Value, IntegersLoseTheirFraction) {
    EXPECT_EQ(text(ValueType::integer, 11825.0), "11825");
    EXPECT_EQ(text(ValueType::integer, -2.9), "-2");
    EXPECT_EQ(text(ValueType::integers, std::vector<double>{1, 0.4}), "[1,0]");
}

TEST(Value, InfinityAndNaNArePrintedAsTheSimulatorDoes) {
    EXPECT_EQ(text(ValueType::single, infinity), "1e+9999");
    EXPECT_EQ(text(ValueType::real, -infinity), "-1e+9999");
    EXPECT_EQ(text(ValueType::integer, notANumber), "null");
    EXPECT_EQ(text(ValueType::singles, std::vector<double>{1, infinity, notANumber}), "[1,1e+9999,null]");
}

TEST(Value, ArraysMayBeEmpty) { EXPECT_EQ(text(ValueType::singles, std::vector<double>{}), "[]"); }

TEST(Value, DataBecomeBase64TextWithTheirPadding) {
    EXPECT_EQ(text(ValueType::data, std::string("N1\0\0", 4)), "\"TjEAAA==\"");
    EXPECT_EQ(text(ValueType::data, std::string()), "\"\"");
}

TEST(Value, TypesHaveTheirNamesOnTheWire) {
    EXPECT_EQ(wireName(ValueType::integer), "int");
    EXPECT_EQ(wireName(ValueType::single), "float");
    EXPECT_EQ(wireName(ValueType::real), "double");
    EXPECT_EQ(wireName(ValueType::integers), "int_array");
    EXPECT_EQ(wireName(ValueType::singles), "float_array");
    EXPECT_EQ(wireName(ValueType::data), "data");
}

} // namespace
} // namespace tarnly::simulator
