#include "TarnlyPlatform/Json/JsonParser.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "TarnlyPlatform/Json/JsonWriter.hpp"

namespace tarnly {
namespace {

double parseDouble(std::string_view text) { return parseJson(text).to_number<double>(); }

std::string nested(int levels) {
    const auto count = static_cast<std::size_t>(levels);
    return std::string(count, '[') + std::string(count, ']');
}

TEST(JsonParser, ReadsEveryKind) {
    const auto json = parseJson(R"( {"a":[1,-2,3.5,true,false,null,"x\u00e9\n"]} )");
    const auto& array = json.at("a").as_array();
    EXPECT_EQ(array[0].as_int64(), 1);
    EXPECT_EQ(array[1].as_int64(), -2);
    EXPECT_EQ(array[2].as_double(), 3.5);
    EXPECT_TRUE(array[3].as_bool());
    EXPECT_FALSE(array[4].as_bool());
    EXPECT_TRUE(array[5].is_null());
    EXPECT_EQ(array[6].as_string(), "x\u00E9\n");
}

TEST(JsonParser, ExponentsHaveNineDigitsAtMost) {
    EXPECT_EQ(parseJson("1e+214748364", NonFinite::kept).as_double(),
              std::numeric_limits<double>::infinity());
    EXPECT_EQ(parseDouble("-1e-214748364"), 0.0);
    for (const char* text : {"1e2147483648", "1e-2147483648", "0e99999999999999999999"})
        EXPECT_THROW(parseJson(text, NonFinite::kept), JsonError) << text;
}

TEST(JsonParser, IntegersAreExactInThe64BitRange) {
    EXPECT_EQ(parseJson("9223372036854775807").as_int64(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(parseJson("-9223372036854775808").as_int64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_FALSE(parseJson("9223372036854775808").is_int64());
    EXPECT_FALSE(parseJson("-9223372036854775809").is_int64());
    EXPECT_EQ(parseJson("[7.0,-1e2]").at(1).as_int64(), -100);
    EXPECT_EQ(parseDouble("9223372036854775808"), 9223372036854775808.0);
    EXPECT_EQ(parseDouble("-18446744073709551616"), -18446744073709551616.0);
}

TEST(JsonParser, DoublesAreTheNearestToTheText) {
    EXPECT_EQ(parseDouble("0.1"), 0.1);
    EXPECT_EQ(parseDouble("47.449888888888886"), 47.449888888888886);
    EXPECT_EQ(parseDouble("5e-324"), 5e-324);
    EXPECT_EQ(parseDouble("1.7976931348623157e308"), std::numeric_limits<double>::max());
    EXPECT_EQ(parseDouble("1e-400"), 0.0);
    EXPECT_TRUE(std::signbit(parseDouble("-0")));
    EXPECT_TRUE(std::signbit(parseDouble("-0.0")));
}

TEST(JsonParser, WhatTheWriterWritesReadsBackTheSame) {
    std::mt19937_64 random(20261121);
    std::uniform_int_distribution<std::uint64_t> bits;
    int finite = 0;
    for (int i = 0; i < 20000; ++i) {
        const double value = std::bit_cast<double>(bits(random));
        if (!std::isfinite(value)) continue;
        JsonWriter writer;
        writer.number(value);
        const auto text = writer.take();
        ASSERT_EQ(parseDouble(text), value) << text;
        ++finite;
    }
    EXPECT_GT(finite, 15000);
}

TEST(JsonParser, OfDuplicateKeysTheLastCounts) {
    EXPECT_EQ(parseJson(R"({"a":1,"b":2,"a":3})").at("a").as_int64(), 3);
    EXPECT_EQ(parseJson(R"({"a":1,"\u0061":{"x":4}})").at("a").at("x").as_int64(), 4);
}

TEST(JsonParser, NestingEndsAt64Levels) {
    EXPECT_NO_THROW(parseJson(nested(64)));
    EXPECT_THROW(parseJson(nested(65)), JsonError);
}

TEST(JsonParser, NumbersBeyondADoubleAreRejectedUnlessKept) {
    EXPECT_THROW(parseJson("1e400"), JsonError);
    EXPECT_THROW(parseJson("[1,{\"a\":-1e+9999}]"), JsonError);
    EXPECT_TRUE(std::isinf(parseJson("1e+9999", NonFinite::kept).as_double()));
    EXPECT_EQ(parseJson("[-1e400,2]", NonFinite::kept).at(0).as_double(),
              -std::numeric_limits<double>::infinity());
    const std::string long_digits(400, '9');
    EXPECT_THROW(parseJson(long_digits), JsonError);
}

class NoJson : public testing::TestWithParam<const char*> {};

TEST_P(NoJson, IsRejected) { EXPECT_THROW(parseJson(GetParam()), JsonError); }

INSTANTIATE_TEST_SUITE_P(JsonParser, NoJson,
                         testing::Values("", " ", "nul", "{", "[1,]", "{\"a\":}", "{'a':1}", "{} x", "{}{}",
                                         "\xEF\xBB\xBF{}", "\"\\ud800\"", "\"\\udc00\"", "\"\\ud800\\u0041\"",
                                         "01", "+1", "1.", ".5", "0x10", "NaN", "Infinity", "\"\t\"",
                                         "// x\n1", "[1] // x", "\"\\x\"", "\"abc"));

} // namespace
} // namespace tarnly
