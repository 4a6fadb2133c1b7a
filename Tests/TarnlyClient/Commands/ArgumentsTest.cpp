#include "TarnlyClient/Commands/Arguments.hpp"

#include <gtest/gtest.h>

namespace tarnly::client {
namespace {

TEST(Arguments, NumbersAreReadWhole) {
    EXPECT_EQ(parseNumber("3"), 3.0);
    EXPECT_EQ(parseNumber("-33.9"), -33.9);
    EXPECT_EQ(parseNumber("+0.5"), 0.5);
    EXPECT_EQ(parseNumber(".5"), 0.5);
    EXPECT_EQ(parseNumber("-.5"), -0.5);
    EXPECT_EQ(parseNumber("1e3"), 1000.0);
    EXPECT_EQ(parseNumber("1.7976931348623157e308"), 1.7976931348623157e308);
}

TEST(Arguments, WhatIsNoFiniteNumberIsRefused) {
    for (const auto* text :
         {"",    " ",   "x",   "1x", " 1",  "1 ",   "0x10", "1,5",      "+",     "-",
          "+-1", "++1", "--1", "1e", "inf", "-inf", "nan",  "infinity", "1e999", "-1e999"}) {
        EXPECT_EQ(parseNumber(text), std::nullopt) << text;
    }
}

TEST(Arguments, ANegativeNumberMayBeginWithItsPoint) {
    EXPECT_EQ(parseableArgument("-.5"), "-0.5");
    EXPECT_EQ(parseableArgument("-5"), "-5");
    EXPECT_EQ(parseableArgument("-."), "-.");
    EXPECT_EQ(parseableArgument("-.x"), "-.x");
    EXPECT_EQ(parseableArgument("--json"), "--json");
    EXPECT_EQ(parseableArgument(""), "");
}

TEST(Arguments, TextMustBeUtf8) {
    std::string good = "caf\xC3\xA9";
    std::string bad = "caf\xE9";
    EXPECT_EQ(utf8Text()(good), "");
    EXPECT_EQ(utf8Text()(bad), "\"caf\xEF\xBF\xBD\" is not UTF-8");
}

} // namespace
} // namespace tarnly::client
